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

// Results of the store, with those that other back ends and look-ups have given.
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

[[noreturn]] void throwFileError(tFileError error) {
  switch (error) {
    case kEndOfFile:
    case kFileNotFound:
    case kReadFault:
    case kDeviceFault: throw tIniFileIOException("An IO exception occurred in tIniFile");
    case kMemoryFull: throw std::bad_alloc();
    default: throw tIniException("An exception occurred in tIniFile");
  }
}

constexpr tMessageWords kItemNotFoundWords{"Section ", " item: ", " not found"};
constexpr tMessageWords kInvalidValueWords{"The value in section ", " item ", " is invalid"};
constexpr tMessageWords kBadListWords{"The number list in section ", " item ", " is invalid."};

tRefusal notFound(const tIniPlace& place, const char* item) {
  const tIniSection* const known = place.found ? place.found : place.parent;
  return {kItemNotFoundWords, known ? known->name : "", place.name, item};
}

tRefusal unfit(const tMessageWords& words, const tIniSection& section, const tIniItem& item) {
  return {words, section.name, {}, item.name};
}

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

const char* skipWhiteSpace(const char* text) {
  while (isWhiteSpace(*text)) ++text;
  return text;
}

enum class tNumberKind { none, malformed, number };

// Decimal digits with an optional sign, and white space around them, as the whole of the text.
tNumberKind readNumber(const char* text, std::int32_t& number) {
  text = skipWhiteSpace(text);
  if (*text == '\0') return tNumberKind::none;
  const bool hasSign = *text == '+' || *text == '-';
  if (!isDigit(text[hasSign ? 1 : 0])) return tNumberKind::malformed;
  const tSignedText parsed = readSigned(text);
  if (parsed.overflowed || *skipWhiteSpace(parsed.end) != '\0') return tNumberKind::malformed;
  number = parsed.value;
  return tNumberKind::number;
}

// False for a list that is none.
bool readNumberList(const char* text, tNumbers& numbers) {
  if (*text == '\0') return true;
  // A list that is read into the memory of others mostly has its room.
  if (numbers.capacity() == 0) {
    const auto commas = std::count(text, text + std::strlen(text), ',');
    numbers.reserve(static_cast<std::size_t>(commas) + 1);
  }
  while (true) {
    const tSignedText parsed = readSigned(text);
    if (!parsed.end) return false;
    numbers.push_back(static_cast<std::uint32_t>(parsed.value));
    text = parsed.end;
    while (*text && *text != ',') ++text;
    if (*text == '\0') return true;
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

bool readIniText(const std::string& path, tIniText& text, tLooked looked,
                 const tContentDigest* expected) {
  return isLoaded(text.read(path.c_str(), looked, expected, tDigested::yes));
}

bool tIniFile::read(const std::string& path) { return isLoaded(store_.load(path.c_str())); }

void tIniFile::load(tIniText text) { isLoaded(store_.load(std::move(text))); }

const char* tIniFile::findValueText(const tIniSection* section, std::string_view item) const {
  const tIniItem* const found = findItem(section, item);
  return found ? found->value : nullptr;
}

tResult<const tIniItem*> tIniFile::getItem(const tIniPlace& place, tLiteral item) const {
  if (const tIniItem* const found = findItem(place.found, item)) return found;
  observeMissing(*this, place, item);
  return notFound(place, item.c_str());
}

tResult<const char*> tIniFile::getValueText(const tIniPlace& place, tLiteral item) const {
  if (const char* const text = findValueText(place.found, item)) return text;
  observeMissing(*this, place, item);
  return notFound(place, item.c_str());
}

tResult<std::string> tIniFile::getString(const tIniPlace& place, tLiteral item) const {
  return getValueText(place, item).then([](const char* text) -> tResult<std::string> {
    return std::string(text);
  });
}

tResult<std::int32_t> tIniFile::getNumber(const tIniPlace& place, tLiteral item) const {
  return getItem(place, item).then([&](const tIniItem* found) {
    return numberOf(*place.found, *found);
  });
}

tResult<std::int32_t> tIniFile::numberOfText(const tIniSection& section, const tIniItem& item) {
  std::int32_t number = 0;
  switch (readNumber(item.value, number)) {
    case tNumberKind::none: return notFound(tIniPlace(section), item.name);
    case tNumberKind::malformed: return unfit(kInvalidValueWords, section, item);
    case tNumberKind::number: break;
  }
  return number;
}

tResult<std::uint32_t> tIniFile::getUnsigned(const tIniPlace& place, tLiteral item) const {
  return getItem(place, item).then([&](const tIniItem* found) {
    return unsignedOf(*place.found, *found);
  });
}

tResult<std::uint32_t> tIniFile::unsignedOf(const tIniSection& section, const tIniItem& item) {
  const tUnsignedText parsed = readUnsignedBase0(item.value);
  if (*item.value == '\0' || *parsed.end != '\0' || parsed.overflowed) {
    return unfit(kInvalidValueWords, section, item);
  }
  return parsed.value;
}

tResult<tNumbers> tIniFile::getNumberList(const tIniPlace& place, tLiteral item) const {
  return getItem(place, item).then([&](const tIniItem* found) {
    return numbersOf(*place.found, *found);
  });
}

tResult<tNumbers> tIniFile::numbersOf(const tIniSection& section, const tIniItem& item) {
  tNumbers numbers;
  const auto done = appendNumbersOf(section, item, numbers);
  if (!done) return done.refusal();
  return numbers;
}

tResult<> tIniFile::appendNumbersOf(const tIniSection& section, const tIniItem& item,
                                    tNumbers& numbers) {
  if (!readNumberList(item.value, numbers)) return unfit(kBadListWords, section, item);
  return kDone;
}

}  // namespace varmex::inline nCORPXITOOLS000
