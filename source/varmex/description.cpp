#include "source/varmex/description.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace varmex {

tResult<tNumbers> tDescription::pxiSysChassisNumbers() const {
  for (const char* section : {"System", "PXI System"}) {
    const tIniPlace place = pxiSys.placeOf(tShortName(section));
    if (place.found) return pxiSys.getNumberList(place, "ChassisList");
  }
  return tNumbers();
}

tResult<tNumbers> tDescription::pxieSysChassisNumbers() const {
  const tIniPlace place = pxieSys.placeOf(tShortName("System"));
  if (!place.found) return tNumbers();
  return pxieSys.getNumberList(place, "ChassisList");
}

const tChassisTables& tDescription::tablesOf(std::uint32_t chassis) const {
  constexpr std::size_t kUsualSections = 16;  // of a chassis, at least
  return tables_
      .get([this] {
        const auto count = pxiSys.store().sections().size() + pxieSys.store().sections().size();
        return tTablesByChassis(count / kUsualSections);
      })
      .of(chassis);
}

// By sorting, which no list can make slow.
void dropRepeats(tNumbers& numbers, std::size_t first) {
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

tResult<tNumbers> listedOnce(const tIniFile& file, const tIniPlace& place, tLiteral list) {
  const auto item = file.getItem(place, list);
  if (!item) return item.refusal();
  tNumbers numbers;
  const auto done = appendEachOnce(*place.found, **item, numbers);
  if (!done) return done.refusal();
  return numbers;
}

tResult<> appendEachOnce(const tIniSection& section, const tIniItem& list, tNumbers& numbers) {
  const std::size_t first = numbers.size();
  const auto done = tIniFile::appendNumbersOf(section, list, numbers);
  if (!done) return done.refusal();
  dropRepeats(numbers, first);
  return kDone;
}

void sortWithoutRepeats(tNumbers& numbers) {
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
}

}  // namespace varmex
