#ifndef OSTREL_QUARKS_NUMBERMAP_H
#define OSTREL_QUARKS_NUMBERMAP_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "ostrel/quarks/hashSeed.h"

namespace varmex::inline nOSTRELS100 {

// Values by numbers that a description chooses. The first value of a number stays.
template <class Value>
class tNumberMap {
 public:
  // The value of the number, and whether it is the one given here.
  std::pair<const Value&, bool> insert(std::uint64_t number, const Value& value) {
    if (2 * entries_.size() == index_.size()) growIndex();
    std::uint32_t& entry = index_[findSlot(number)];
    const bool isNew = entry == 0;
    if (isNew) {
      entries_.push_back({number, value});
      entry = static_cast<std::uint32_t>(entries_.size());
    }
    return {entries_[entry - 1].value, isNew};
  }

  // Null when there is none. It stays where it is until the next insertion.
  const Value* find(std::uint64_t number) const {
    if (index_.empty()) return nullptr;
    const std::uint32_t entry = index_[findSlot(number)];
    return entry == 0 ? nullptr : &entries_[entry - 1].value;
  }

 private:
  struct tEntry {
    std::uint64_t number;
    Value value;
  };

  // Where the index has the number, or the empty slot where it would be.
  std::size_t findSlot(std::uint64_t number) const {
    const std::size_t mask = index_.size() - 1;
    std::size_t slot = hashSeed_.scramble(number) & mask;
    while (index_[slot] && entries_[index_[slot] - 1].number != number) slot = (slot + 1) & mask;
    return slot;
  }

  // At most half of the index is in use.
  void growIndex() {
    constexpr std::size_t kSmallest = 64;
    index_.assign(std::max(kSmallest, 4 * index_.size()), 0);
    entries_.reserve(index_.size() / 2);
    std::uint32_t count = 0;
    for (const tEntry& entry : entries_) index_[findSlot(entry.number)] = ++count;
  }

  std::vector<tEntry> entries_;
  std::vector<std::uint32_t> index_;  // by hash: entry number plus 1, 0 for none
  tHashSeed hashSeed_{this};
};

}  // namespace varmex::inline nOSTRELS100

#endif
