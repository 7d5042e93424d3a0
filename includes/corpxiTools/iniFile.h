#ifndef CORPXITOOLS_INIFILE_H
#define CORPXITOOLS_INIFILE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "corpxiTools/iniException.h"
#include "corpxiTools/iniStore.h"

namespace varmex::inline nCORPXITOOLS000 {

// Reads a description file as tIniFile::read does, with the same failures, for a load later on that
// may turn out to be needless.
bool readIniText(const std::string& path, tIniText& text, const tContentDigest* expected);

// A description file, looked up by section and item. Names compare byte for byte.
//
// A look-up of what is not there throws tItemNotFoundException, a value that does not fit
// tInvalidValueException or tBadListStringException. Look-ups may run in any number of threads.
class tIniFile {
 public:
  // Replaces the content. False when the file could not be opened or read; tIniException for an
  // encoding other than bytes or UTF-8; std::bad_alloc.
  bool read(const std::string& path);

  // Replaces the content by that of a file which has been read; std::bad_alloc.
  void load(tIniText text);

  bool hasSection(std::string_view section) const;
  bool hasItem(std::string_view section, std::string_view item) const;

  // Null when there is none. The section lives as long as the content.
  const tIniSection* findSection(std::string_view section) const;

  // The same, at less cost for a section that stands just behind an earlier one, if there is one.
  const tIniSection* findSectionBehind(const tIniSection* earlier, std::string_view section) const;

  // The stored text, null when there is none.
  const char* findValueText(std::string_view section, std::string_view item) const;
  static const char* findValueText(const tIniSection& section, std::string_view item);

  // The stored text, which lives as long as the content.
  const char* getValueText(std::string_view section, std::string_view item) const;

  std::string getString(std::string_view section, std::string_view item) const;

  // Decimal with an optional sign and white space around; a blank value counts as absent.
  std::int32_t getNumber(std::string_view section, std::string_view item) const;

  // The same for a text that findValueText has given for that item.
  static std::int32_t parseNumber(const char* text, std::string_view section,
                                  std::string_view item);

  // In the notation of strtoul with base 0; a minus sign negates modulo 2^32.
  std::uint32_t getUnsigned(std::string_view section, std::string_view item) const;

  // Numbers between commas, in file order, negative ones modulo 2^32; what follows a number up to
  // the next comma is passed over.
  std::vector<std::uint32_t> getNumberList(std::string_view section, std::string_view item) const;

  // The same for a text that findValueText has given for that item, behind what is in `numbers`.
  static void parseNumberList(const char* text, std::string_view section, std::string_view item,
                              std::vector<std::uint32_t>& numbers);

  const tIniStore& store() const { return store_; }

 private:
  tIniStore store_;
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
