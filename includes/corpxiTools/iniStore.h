#ifndef CORPXITOOLS_INISTORE_H
#define CORPXITOOLS_INISTORE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <forward_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "corpxiTools/iniText.h"
#include "ostrel/quarks/hashSeed.h"
#include "ostrel/quarks/nameBytes.h"
#include "ostrel/quarks/numberedName.h"

namespace varmex::inline nCORPXITOOLS000 {

// One item. Its texts live in the store and are NUL-terminated.
struct tIniItem {
  const char* name;
  const char* value;
  std::uint32_t nameLength;
  std::uint32_t line;  // from 1

  std::string_view nameView() const { return {name, nameLength}; }
};

struct tIniSection {
  const char* name = nullptr;
  std::uint32_t nameLength = 0;
  std::uint32_t line = 0;  // of the header, of the latest one when it is repeated
  tIniItem* items = nullptr;
  std::uint32_t count = 0;
  bool hasPieces = false;  // holds a name like a piece of a split value
  bool hasTwins = false;   // may hold two items of one name, of which the first is the one
  bool isSorted = false;
  // The items of a section that was taken up again behind another one.
  std::unique_ptr<std::vector<tIniItem>> moved;

  std::string_view nameView() const { return {name, nameLength}; }
};

// One description file in memory. The file's own bytes, cut up in place, hold the texts.
//
// While a file loads, a repeated section or item is merged into the earlier one only if a binary
// search over the entries in file order reaches that one. This is deliberate: it decides which of
// two entries answers, and readers of existing descriptions rely on the answers. Of two entries of
// one name that remain, the earlier in the file is found.
//
// Look-ups write nothing, so that any number of threads may make them at once, and they cost the
// same whatever was looked up before. A load and a look-up exclude each other.
class tIniStore {
 public:
  tIniStore() = default;
  tIniStore(const tIniStore&) = delete;
  tIniStore& operator=(const tIniStore&) = delete;

  // Replaces the content by that of the file. On failure the store is empty.
  int load(const char* path);

  // The same for a file that has been read.
  int load(tIniText text);

  const tIniSection* findSection(std::string_view name) const;

  // The same, at less cost for a section that stands not far behind an earlier one of this store,
  // if there is one.
  const tIniSection* findSectionBehind(const tIniSection* earlier,
                                       const tNumberedName& name) const {
    // Of sections of one name the index alone knows the first.
    if (earlier && !hasTwins_) {
      const tIniSection* const begin = earlier + 1;
      const std::ptrdiff_t left = sections_.data() + sections_.size() - begin;
      const tIniSection* const stop = begin + std::min(kMostLooks, left);
      for (const tIniSection* section = begin; section != stop; ++section) {
        if (name.is(section->nameView())) return section;
      }
    }
    return findSection(name);
  }

  // Null when there is no such section or item.
  const tIniItem* findItem(std::string_view section, std::string_view item) const;
  static const tIniItem* findItem(const tIniSection& section, std::string_view item);

  // The same, at less cost for an item that stands at that place of the section. The place becomes
  // that of what is found: sections that tell of one thing after another are laid out alike.
  static const tIniItem* findItem(const tIniSection& section, std::string_view item,
                                  std::size_t& place) {
    if (place < section.count && !section.hasTwins) {
      const tIniItem* const likely = section.items + place;
      if (isSameName(likely->nameView(), item)) return likely;
    }
    const tIniItem* const found = findItem(section, item);
    if (found) place = static_cast<std::size_t>(found - section.items);
    return found;
  }

  // A hint to the processor, which changes no answer: a walk that has come to that section of this
  // store goes on in file order, and looks in each for the item at that place. Always inline:
  // compilers leave out calls of a function that only fetches.
  [[gnu::always_inline]] void fetchBehind(const tIniSection& section, std::size_t place) const {
    constexpr std::ptrdiff_t kAhead = 3;  // what is fetched from further ahead may be gone again
    if (sections_.data() + sections_.size() - &section <= kAhead) return;
    const tIniSection& far = (&section)[kAhead];
    const tIniSection& next = (&section)[1];
    __builtin_prefetch(far.name);
    if (place < far.count) __builtin_prefetch(far.items + place);
    if (place < next.count) __builtin_prefetch(next.items[place].value);
  }

  // In file order.
  const std::vector<tIniSection>& sections() const { return sections_; }

  // The first line that is neither comment, header nor item (a blank line is none of them), from 1;
  // -1 without such a line.
  int firstBadLine() const { return firstBadLine_; }

 private:
  static constexpr std::ptrdiff_t kMostLooks = 12;  // from a chassis to its first slot, mostly

  class tLoad;

  // With the name's hash: a look-up that meets the place of another name looks at no section.
  struct tIndexEntry {
    std::uint32_t section = 0;  // its number plus 1, 0 for none
    std::uint32_t hash = 0;
  };

  void clear();
  const tIniSection* findSection(const tNumberedName& name) const;
  std::size_t findPlace(std::string_view name, std::uint32_t hash) const;

  std::unique_ptr<char[]> text_;
  std::unique_ptr<tIniItem[]> items_;
  std::forward_list<std::unique_ptr<tIniItem[]>> earlierItems_;  // for which that one came too late
  std::forward_list<std::string> joinedValues_;
  std::vector<tIniSection> sections_;
  std::vector<tIndexEntry> index_;  // by hash
  tHashSeed hashSeed_{this};
  int firstBadLine_ = -1;
  bool hasTwins_ = false;  // sections of one name, of which the index has the first
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
