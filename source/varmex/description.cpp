#include "source/varmex/description.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <utility>

namespace varmex {

std::vector<std::uint32_t> tDescription::pxiSysChassisNumbers() const {
  for (const char* section : {"System", "PXI System"}) {
    if (pxiSys.hasSection(section)) return pxiSys.getNumberList(section, "ChassisList");
  }
  return {};
}

std::vector<std::uint32_t> tDescription::pxieSysChassisNumbers() const {
  if (!pxieSys.hasSection("System")) return {};
  return pxieSys.getNumberList("System", "ChassisList");
}

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

// By sorting, which no list can make slow.
void dropRepeats(std::vector<std::uint32_t>& numbers, std::size_t first) {
  const auto begin = numbers.begin() + static_cast<std::ptrdiff_t>(first);
  const auto notAscending = std::greater_equal<std::uint32_t>();
  if (std::adjacent_find(begin, numbers.end(), notAscending) == numbers.end()) return;
  std::vector<std::pair<std::uint32_t, std::size_t>> places;
  places.reserve(numbers.size() - first);
  for (std::size_t n = first; n < numbers.size(); ++n) places.emplace_back(numbers[n], n);
  std::sort(places.begin(), places.end());
  const auto isSame = [](const auto& a, const auto& b) { return a.first == b.first; };
  places.erase(std::unique(places.begin(), places.end(), isSame), places.end());
  std::sort(places.begin(), places.end(),
            [](const auto& a, const auto& b) { return a.second < b.second; });
  numbers.resize(first);
  for (const auto& [number, place] : places) numbers.push_back(number);
}

std::vector<std::uint32_t> withoutRepeats(std::vector<std::uint32_t> numbers) {
  dropRepeats(numbers, 0);
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
