#include "source/varmex/description.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <unordered_set>

namespace varmex {

tSlotName::tSlotName(std::string_view prefix, std::uint32_t chassis, std::uint32_t slot) {
  constexpr std::string_view kSlot = "Slot";
  char* const last = std::end(text_) - 1;
  char* end = std::copy(prefix.begin(), prefix.end(), text_);
  end = std::to_chars(end, last, chassis).ptr;
  end = std::copy(kSlot.begin(), kSlot.end(), end);
  end = std::to_chars(end, last, slot).ptr;
  *end = '\0';
  length_ = static_cast<std::uint8_t>(end - text_);
}

std::string chassisKey(std::uint32_t chassis) { return "Chassis" + std::to_string(chassis); }

tSlotName slotKey(std::uint32_t chassis, std::uint32_t slot) { return {"Chassis", chassis, slot}; }

std::vector<std::uint32_t> withoutRepeats(std::vector<std::uint32_t> numbers) {
  const auto notAscending = std::greater_equal<std::uint32_t>();
  if (std::adjacent_find(numbers.begin(), numbers.end(), notAscending) == numbers.end()) {
    return numbers;
  }
  std::unordered_set<std::uint32_t> met;
  std::erase_if(numbers, [&met](std::uint32_t number) { return !met.insert(number).second; });
  return numbers;
}

std::vector<std::uint32_t> sortedUnion(std::vector<std::uint32_t> a,
                                       const std::vector<std::uint32_t>& b) {
  a.insert(a.end(), b.begin(), b.end());
  std::sort(a.begin(), a.end());
  a.erase(std::unique(a.begin(), a.end()), a.end());
  return a;
}

}  // namespace varmex
