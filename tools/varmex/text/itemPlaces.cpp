#include "tools/varmex/text/itemPlaces.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "corpxiTools/fileSystem/utils.h"
#include "corpxiTools/iniFile.h"
#include "ostrel/quarks/numbers.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/encoding.h"
#include "tools/varmex/text/files.h"

namespace tool {

namespace {

constexpr std::size_t kLongestValue = 60;  // in columns

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

bool hasFault(tItemFault fault, const varmex::tIniSection& section, const varmex::tIniItem& item) {
  switch (fault) {
    case tItemFault::missing: return isBlank(item.value);
    // Which of the two readers the library takes depends on the item.
    case tItemFault::noNumber:
      return !varmex::tIniFile::numberOf(section, item) ||
             !varmex::tIniFile::unsignedOf(section, item);
    case tItemFault::noList: return !varmex::tIniFile::numbersOf(section, item);
    case tItemFault::differs: return true;
  }
  return false;
}

std::string quoted(std::string_view value) {
  const std::size_t end = endWithin(value, kLongestValue);
  return '"' + std::string(value.substr(0, end)) + (end < value.size() ? "...\"" : "\"");
}

// Of one file; empty where it does not have that fault.
std::string placeIn(const varmex::tIniFile& file, const std::string& path, tItemFault fault,
                    const std::string& section, const std::string& item) {
  const varmex::tIniSection* const place = file.findSection(section);
  if (!place) return {};
  const varmex::tIniItem* const found = file.findItem(place, item);
  if (found && !hasFault(fault, *place, *found)) return {};
  if (!found && fault != tItemFault::missing) return {};
  return (found ? quoted(found->value) + " in " : "") + path + ", line " +
         std::to_string(found ? found->line : place->line);
}

}  // namespace

std::string placesOf(tItemFault fault, const std::string& section, const std::string& item) {
  static tDescriptionFile files[2];
  const std::string paths[] = {varmex::getPxiSysPath(), varmex::getPxieSysPath()};
  std::string places;
  std::string without;
  for (const int n : {0, 1}) {
    const varmex::tIniFile* const file = files[n].at(paths[n]);
    if (!file) continue;
    const std::string place = placeIn(*file, paths[n], fault, section, item);
    if (!place.empty()) places += (places.empty() ? "" : ", and ") + place;
    if (!file->hasSection(section)) without = paths[n] + " has no such section";
  }
  return places.empty() && fault == tItemFault::missing ? without : places;
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
