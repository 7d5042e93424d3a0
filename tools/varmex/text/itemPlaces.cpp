#include "tools/varmex/text/itemPlaces.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

#include "corpxiTools/fileSystem/utils.h"
#include "corpxiTools/iniFile.h"
#include "ostrel/quarks/numbers.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/encoding.h"
#include "tools/varmex/text/files.h"
#include "tools/varmex/text/slotPaths.h"

namespace tool {

namespace {

constexpr std::size_t kLongestValue = 60;  // in columns
constexpr std::size_t kMostPlaces = 3;     // that are told

// A file of the description. It is read at the first need, and again when it has changed.
class tDescriptionFile {
 public:
  // Null where it can't be read.
  const varmex::tIniFile* at(const std::string& path) {
    std::error_code error;
    const auto stamp = std::filesystem::last_write_time(filePath(path), error);
    if (error) return nullptr;
    if (path != path_ || stamp != stamp_) {
      path_ = path;
      stamp_ = stamp;
      isRead_ = read();
    }
    return isRead_ ? &file_ : nullptr;
  }

 private:
  bool read() {
    try {
      return file_.read(path_);
    } catch (const varmex::tIniException&) {
      return false;
    }
  }

  std::string path_;
  std::filesystem::file_time_type stamp_;
  varmex::tIniFile file_;
  bool isRead_ = false;
};

bool isBlank(std::string_view text) {
  return std::all_of(text.begin(), text.end(), varmex::isWhiteSpace);
}

bool hasLine(const varmex::tIniSection& section, const varmex::tIniItem& item,
             const std::string& line) {
  const auto numbers = varmex::tIniFile::numbersOf(section, item);
  if (!numbers) return false;
  return std::any_of(numbers->begin(), numbers->end(), [&](std::uint32_t number) {
    return std::to_string(static_cast<std::int32_t>(number)) == line;
  });
}

bool hasFault(const tFaultyItem& faulty, const varmex::tIniSection& section,
              const varmex::tIniItem& item) {
  switch (faulty.fault) {
    case tItemFault::missing: return isBlank(item.value);
    // Which of the two readers the library takes depends on the item.
    case tItemFault::noNumber:
      return !varmex::tIniFile::numberOf(section, item) ||
             !varmex::tIniFile::unsignedOf(section, item);
    case tItemFault::noList: return !varmex::tIniFile::numbersOf(section, item);
    case tItemFault::differs: return true;
    case tItemFault::noRootBus: return !rootBusOf(item.value);
    case tItemFault::noSlotPath:
      return faulty.item == kSlotPathItem ? !isSlotPath(item.value)
                                          : rootBusOf(item.value).value_or(0) > kLastRootBus;
    case tItemFault::noSlotType: return item.value == faulty.value;
    case tItemFault::noLine: return hasLine(section, item, faulty.value);
  }
  return false;
}

// Whether it is the name of that section, or one of those that it stands for.
bool isMeant(std::string_view name, std::string_view pattern) {
  while (!pattern.empty()) {
    const bool isNumber = pattern.front() == '#';
    std::size_t length = 1;
    if (isNumber) length = std::min(name.find_first_not_of("0123456789"), name.size());
    if (length == 0 || name.empty() || (!isNumber && name.front() != pattern.front())) return false;
    name.remove_prefix(length);
    pattern.remove_prefix(1);
  }
  return name.empty();
}

using tSections = std::vector<const varmex::tIniSection*>;

tSections sectionsOf(const varmex::tIniFile& file, const std::string& name) {
  tSections sections;
  if (name.find('#') == name.npos) {
    if (const varmex::tIniSection* const one = file.findSection(name)) sections.push_back(one);
    return sections;
  }
  for (const varmex::tIniSection& section : file.store().sections()) {
    if (isMeant(section.nameView(), name)) sections.push_back(&section);
  }
  return sections;
}

std::string quoted(std::string_view value) {
  const std::size_t end = endWithin(value, kLongestValue);
  return '"' + std::string(value.substr(0, end)) + (end < value.size() ? "...\"" : "\"");
}

// Of one section; empty where it does not have that fault.
std::string placeIn(const varmex::tIniFile& file, const std::string& path,
                    const varmex::tIniSection& section, const tFaultyItem& faulty) {
  const varmex::tIniItem* const found = file.findItem(&section, faulty.item);
  if (found && !hasFault(faulty, section, *found)) return {};
  if (!found && faulty.fault != tItemFault::missing) return {};
  const bool isTold = faulty.fault == tItemFault::noSlotType;  // by the sentence itself
  return (found && !isTold ? quoted(found->value) + " in " : "") + path + ", line " +
         std::to_string(found ? found->line : section.line);
}

// The two files, as far as they can be read.
struct tFiles {
  std::string paths[2];
  const varmex::tIniFile* files[2];

  // Whether the library does not read the item there, whatever that file says.
  bool isUnread(int n, tItemFault fault, std::string_view section) const {
    const bool isPath = fault == tItemFault::noRootBus || fault == tItemFault::noSlotPath;
    const varmex::tIniFile* const other = files[1 - n];
    if (isPath) {
      return n == 1 || (other && other->hasSection(section.substr(0, section.find("Slot"))));
    }
    if (fault == tItemFault::noSlotType) return n == 0;
    return fault == tItemFault::noLine && n == 1 && other && other->hasSection(section);
  }
};

tFiles openFiles() {
  static tDescriptionFile files[2];
  tFiles both{{varmex::getPxiSysPath(), varmex::getPxieSysPath()}, {}};
  for (const int n : {0, 1}) both.files[n] = files[n].at(both.paths[n]);
  return both;
}

std::string joined(const std::vector<std::string>& places) {
  std::string text;
  for (std::size_t n = 0; n < places.size() && n < kMostPlaces; ++n) {
    text += (n == 0 ? "" : ", and ") + places[n];
  }
  if (places.size() <= kMostPlaces) return text;
  return text + ", and " + std::to_string(places.size() - kMostPlaces) + " more";
}

}  // namespace

std::string placesOf(const tFaultyItem& faulty) {
  const tFiles both = openFiles();
  std::vector<std::string> places;
  std::string without;
  for (const int n : {0, 1}) {
    const varmex::tIniFile* const file = both.files[n];
    if (!file) continue;
    const tSections sections = sectionsOf(*file, faulty.section);
    for (const varmex::tIniSection* const section : sections) {
      if (both.isUnread(n, faulty.fault, section->nameView())) continue;
      const std::string place = placeIn(*file, both.paths[n], *section, faulty);
      if (!place.empty()) places.push_back(place);
    }
    if (!sections.empty()) continue;
    without = without.empty() ? both.paths[n] + " has no such section"
                              : "neither file has such a section";
  }
  return places.empty() && faulty.fault == tItemFault::missing ? without : joined(places);
}

std::string mapSectionOf(std::uint32_t chassis, std::uint32_t bridge) {
  const std::string section = "Chassis" + std::to_string(chassis);
  const tFiles both = openFiles();
  const varmex::tIniSection* const place =
      both.files[0] ? both.files[0]->findSection(section + "TriggerBridge" + std::to_string(bridge))
                    : nullptr;
  const varmex::tIniItem* const map =
      place ? both.files[0]->findItem(place, "LineMappingSpec") : nullptr;
  const auto number = map ? varmex::tIniFile::unsignedOf(*place, *map) : 0;
  return section + "LineMappingSpec" + (map && number ? std::to_string(*number) : "#");
}

std::string refusedFiles() {
  std::string refused;
  for (const std::string& path : {varmex::getPxiSysPath(), varmex::getPxieSysPath()}) {
    char bytes[4] = {};
    std::ifstream(filePath(path), std::ios::binary).read(bytes, sizeof bytes);
    const auto encoding = wideEncodingOf({bytes, sizeof bytes});
    if (encoding) refused += (refused.empty() ? "" : " and ") + path + " is in " + encoding->name;
  }
  return refused;
}

}  // namespace tool
