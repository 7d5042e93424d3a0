#include "source/varmex/description.h"

#include <algorithm>
#include <functional>
#include <unordered_set>

namespace varmex {

std::string chassisKey(std::uint32_t chassis) { return "Chassis" + std::to_string(chassis); }

std::string slotKey(std::uint32_t chassis, std::uint32_t slot) {
  return chassisKey(chassis) + "Slot" + std::to_string(slot);
}

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
