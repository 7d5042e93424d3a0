#ifndef CORPXITOOLS_INIFILE_H
#define CORPXITOOLS_INIFILE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "corpxiTools/iniException.h"
#include "corpxiTools/iniStore.h"
#include "corpxiTools/observer.h"
#include "ostrel/quarks/numbers.h"
#include "ostrel/quarks/result.h"

namespace varmex::inline nCORPXITOOLS000 {

// Reads a description file as tIniFile::read does, with the same failures, for a load later on that
// may turn out to be needless.
bool readIniText(const std::string& path, tIniText& text, tLooked looked,
                 const tContentDigest* expected);

using tNumbers = std::vector<std::uint32_t>;

// A section as a look-up names it: one that was found, or the name of one that was not, behind the
// name of the section above it if it has one.
struct tIniPlace {
  explicit tIniPlace(const tIniSection& section) : found(&section) {}
  explicit tIniPlace(const tShortName& missing, const tIniSection* above = nullptr)
      : found(nullptr), name(missing), parent(above) {}

  const tIniSection* found;
  tShortName name;
  const tIniSection* parent = nullptr;
};

// A description file, looked up by section and item. Names compare byte for byte.
//
// The look-ups that begin with "get" refuse what is not there and values that do not fit. Look-ups
// may run in any number of threads.
class tIniFile {
 public:
  // Replaces the content. False when the file could not be opened or read; tIniException for an
  // encoding other than bytes or UTF-8; std::bad_alloc.
  bool read(const std::string& path);

  // Replaces the content by that of a file which has been read; std::bad_alloc.
  void load(tIniText text);

  bool hasSection(std::string_view section) const { return findSection(section) != nullptr; }

  // Null when there is none. The section lives as long as the content.
  const tIniSection* findSection(std::string_view section) const {
    const tIniSection* const found = store_.findSection(section);
    observeSection(*this, section, found);
    return found;
  }

  // The same, at less cost for a section that stands not far behind an earlier one of this file, if
  // there is one.
  const tIniSection* findSectionBehind(const tIniSection* earlier,
                                       const tNumberedName& section) const {
    const tIniSection* const found = store_.findSectionBehind(earlier, section);
    observeSection(*this, section, found);
    return found;
  }

  tIniPlace placeOf(const tShortName& section) const {
    const tIniSection* const found = findSection(section);
    return found ? tIniPlace(*found) : tIniPlace(section);
  }

  // Null when there is no such section or item.
  const tIniItem* findItem(const tIniSection* section, std::string_view item) const {
    const tIniItem* const found = section ? tIniStore::findItem(*section, item) : nullptr;
    observeItem(*this, section, item, found);
    return found;
  }

  // The same, at less cost for an item that stands at that place of the section (iniStore.h).
  const tIniItem* findItem(const tIniSection& section, std::string_view item,
                           std::size_t& place) const {
    const tIniItem* const found = tIniStore::findItem(section, item, place);
    observeItem(*this, &section, item, found);
    return found;
  }

  bool hasItem(const tIniSection* section, std::string_view item) const {
    return findItem(section, item) != nullptr;
  }

  // The stored text, null when there is none.
  const char* findValueText(const tIniSection* section, std::string_view item) const;

  tResult<const tIniItem*> getItem(const tIniPlace& place, tLiteral item) const;

  // The stored text, which lives as long as the content.
  tResult<const char*> getValueText(const tIniPlace& place, tLiteral item) const;

  tResult<std::string> getString(const tIniPlace& place, tLiteral item) const;

  // Decimal with an optional sign and white space around; a blank value counts as absent.
  tResult<std::int32_t> getNumber(const tIniPlace& place, tLiteral item) const;

  // In the notation of strtoul with base 0; a minus sign negates modulo 2^32.
  tResult<std::uint32_t> getUnsigned(const tIniPlace& place, tLiteral item) const;

  // Numbers between commas, in file order, negative ones modulo 2^32; what follows a number up to
  // the next comma is passed over.
  tResult<tNumbers> getNumberList(const tIniPlace& place, tLiteral item) const;

  // The same three for an item that was found in that section.
  static tResult<std::int32_t> numberOf(const tIniSection& section, const tIniItem& item) {
    const tSignedText plain = readSigned(item.value);
    const bool isDigits = *item.value >= '0' && *item.value <= '9';
    if (isDigits && *plain.end == '\0' && !plain.overflowed) return plain.value;
    return numberOfText(section, item);
  }
  static tResult<std::uint32_t> unsignedOf(const tIniSection& section, const tIniItem& item);
  static tResult<tNumbers> numbersOf(const tIniSection& section, const tIniItem& item);

  // The numbers behind what is in `numbers`, which a refusal leaves with a part of them.
  static tResult<> appendNumbersOf(const tIniSection& section, const tIniItem& item,
                                   tNumbers& numbers);

  const tIniStore& store() const { return store_; }

 private:
  static tResult<std::int32_t> numberOfText(const tIniSection& section, const tIniItem& item);

  tIniStore store_;
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
