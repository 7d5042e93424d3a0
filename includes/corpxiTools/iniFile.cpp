#include "corpxiTools/iniFile.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "ostrel/quarks/numbers.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

// Codes of the reader's exceptions.
enum tFileError : int {
  kItemNotFound = -50003,
  kSectionNameTooLong = -50005,
  kSectionNotFound = -50007,
  kUnknownFault = -50150,
  kInvalidValue = -50175,
  kEndOfFile = -50203,
  kFileNotFound = -50204,
  kReadFault = -50207,
  kDeviceFault = -50209,
  kMemoryFull = -50352,
  kBadListString = -665102,
};

struct tResultMapping {
  int result;
  tFileError error;
};

// Results of the store and of the number readers, with those that other back ends have given.
constexpr tResultMapping kResultMappings[] = {
    {0, kItemNotFound},     {-2, kSectionNameTooLong}, {-5, kDeviceFault},
    {-12, kMemoryFull},     {-13, kFileNotFound},      {-22, kFileNotFound},
    {-24, kFileNotFound},   {-28, kEndOfFile},         {-5001, kFileNotFound},
    {-5002, kReadFault},    {-5003, kFileNotFound},    {-5004, kFileNotFound},
    {-5021, kInvalidValue}, {-5022, kInvalidValue},    {-5023, kInvalidValue},
    {-5024, kInvalidValue}, {-665102, kBadListString},
};

tFileError fileErrorOf(int result) {
  for (const tResultMapping& mapping : kResultMappings) {
    if (mapping.result == result) return mapping.error;
  }
  return kUnknownFault;
}

[[noreturn]] void throwFileError(tFileError error, const std::string& section = {},
                                 const std::string& item = {}) {
  switch (error) {
    case kItemNotFound:
    case kSectionNotFound:
      if (item.empty()) throw tItemNotFoundException("Section " + section + " not found");
      throw tItemNotFoundException("Section " + section + " item: " + item + " not found");
    case kSectionNameTooLong:
      throw tSectionNameTooLongException("Section " + section + " has too long a name");
    case kInvalidValue:
      throw tInvalidValueException("The value in section " + section + " item " + item +
                                   " is invalid");
    case kBadListString:
      throw tBadListStringException("The number list in section " + section + " item " + item +
                                    " is invalid.");
    case kEndOfFile:
    case kFileNotFound:
    case kReadFault:
    case kDeviceFault: throw tIniFileIOException("An IO exception occurred in tIniFile");
    case kMemoryFull: throw std::bad_alloc();
    case kUnknownFault: break;
  }
  throw tIniException("An exception occurred in tIniFile");
}

// The lower layer's result for one item of a section.
[[noreturn]] void throwResult(int result, std::string_view section, std::string_view item) {
  throwFileError(fileErrorOf(result), std::string(section), std::string(item));
}

constexpr int kNumberFound = 1;
constexpr int kNothingFound = 0;
constexpr int kNumberMalformed = -5021;
constexpr int kListMalformed = -665102;

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

const char* skipWhiteSpace(const char* text) {
  while (isWhiteSpace(*text)) ++text;
  return text;
}

// Decimal digits with an optional sign, and white space around them, as the whole of the text.
int readNumber(const char* text, std::int32_t& number) {
  text = skipWhiteSpace(text);
  if (*text == '\0') return kNothingFound;
  const bool hasSign = *text == '+' || *text == '-';
  if (!isDigit(text[hasSign ? 1 : 0])) return kNumberMalformed;
  const tSignedText parsed = readSigned(text);
  if (parsed.overflowed || *skipWhiteSpace(parsed.end) != '\0') return kNumberMalformed;
  number = parsed.value;
  return kNumberFound;
}

int readNumberList(const char* text, std::vector<std::uint32_t>& numbers) {
  if (*text == '\0') return kNumberFound;
  if (numbers.empty()) {
    const auto commas = std::count(text, text + std::strlen(text), ',');
    numbers.reserve(static_cast<std::size_t>(commas) + 1);
  }
  while (true) {
    const tSignedText parsed = readSigned(text);
    if (!parsed.end) return kListMalformed;
    numbers.push_back(static_cast<std::uint32_t>(parsed.value));
    text = std::strchr(parsed.end, ',');
    if (!text) return kNumberFound;
    ++text;
  }
}

// False for what may be better at another try.
bool isLoaded(int result) {
  if (result >= 0) return true;
  try {
    throwFileError(fileErrorOf(result));
  } catch (const tIniFileIOException&) {
    return false;
  }
}

}  // namespace

bool readIniText(const std::string& path, tIniText& text, const tContentDigest* expected) {
  return isLoaded(text.read(path.c_str(), expected));
}

bool tIniFile::read(const std::string& path) { return isLoaded(store_.load(path.c_str())); }

void tIniFile::load(tIniText text) { isLoaded(store_.load(std::move(text))); }

bool tIniFile::hasSection(std::string_view section) const {
  return findSection(section) != nullptr;
}

const tIniSection* tIniFile::findSection(std::string_view section) const {
  return store_.findSection(section);
}

const tIniSection* tIniFile::findSectionBehind(const tIniSection* earlier,
                                               std::string_view section) const {
  return store_.findSectionBehind(earlier, section);
}

bool tIniFile::hasItem(std::string_view section, std::string_view item) const {
  return store_.findItem(section, item) != nullptr;
}

const char* tIniFile::findValueText(std::string_view section, std::string_view item) const {
  const tIniItem* const found = store_.findItem(section, item);
  return found ? found->value : nullptr;
}

const char* tIniFile::findValueText(const tIniSection& section, std::string_view item) {
  const tIniItem* const found = tIniStore::findItem(section, item);
  return found ? found->value : nullptr;
}

const char* tIniFile::getValueText(std::string_view section, std::string_view item) const {
  const char* const text = findValueText(section, item);
  if (!text) throwResult(kNothingFound, section, item);
  return text;
}

std::string tIniFile::getString(std::string_view section, std::string_view item) const {
  return getValueText(section, item);
}

std::int32_t tIniFile::getNumber(std::string_view section, std::string_view item) const {
  return parseNumber(getValueText(section, item), section, item);
}

std::int32_t tIniFile::parseNumber(const char* text, std::string_view section,
                                   std::string_view item) {
  std::int32_t number = 0;
  const int result = readNumber(text, number);
  if (result != kNumberFound) throwResult(result, section, item);
  return number;
}

std::uint32_t tIniFile::getUnsigned(std::string_view section, std::string_view item) const {
  const char* const text = getValueText(section, item);
  const tUnsignedText parsed = readUnsignedBase0(text);
  if (*text == '\0' || *parsed.end != '\0' || parsed.overflowed) {
    throwResult(kNumberMalformed, section, item);
  }
  return parsed.value;
}

std::vector<std::uint32_t> tIniFile::getNumberList(std::string_view section,
                                                   std::string_view item) const {
  std::vector<std::uint32_t> numbers;
  parseNumberList(getValueText(section, item), section, item, numbers);
  return numbers;
}

void tIniFile::parseNumberList(const char* text, std::string_view section, std::string_view item,
                               std::vector<std::uint32_t>& numbers) {
  const int result = readNumberList(text, numbers);
  if (result < 0) throwResult(result, section, item);
}

}  // namespace varmex::inline nCORPXITOOLS000
