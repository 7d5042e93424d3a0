#include "telmar/TelmarUtils.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

#include "ostrel/quarks/failure.h"
#include "ostrel/quarks/jsonScanner.h"
#include "ostrel/quarks/jsonWriter.h"

namespace telmar {

namespace {

using namespace varmex;

constexpr const char* kSeedMustBeObject = "seed must be an object";
constexpr const char* kConstraintsMissing = "constraints field missing";

[[noreturn]] void raiseInvalid(const char* message, const tSourcePosition& position) {
  tFailure(kOstrelInvalidParameter, position).text("telmar_debug", message).raise();
}

// `json` goes into the text as it stands, so the text is as well formed as the input.
[[noreturn]] void raiseInvalid(const char* message, const char* json,
                               const tSourcePosition& position) {
  tFailure(kOstrelInvalidParameter, position)
      .open("telmar_debug")
      .text("msg", message)
      .raw("json", json)
      .raise();
}

// Of an element's keys and numbers and what parts it from the next, the texts aside.
constexpr std::size_t kLongestElement = 128;

constexpr std::uint32_t kUnreadable = 0xFFFFFFFF;

// The digits of a cost below zero count modulo 2^32, and too many of them as the largest number.
std::uint32_t readInteger(std::string_view number) {
  const bool isNegative = number.starts_with('-');
  if (isNegative) number.remove_prefix(1);
  if (number.empty()) return kUnreadable;
  std::uint64_t value = 0;
  for (const char digit : number) {
    value = value * 10 + static_cast<unsigned char>(digit - '0');
    if (value > kUnreadable) return kUnreadable;
  }
  const auto bits = static_cast<std::uint32_t>(value);
  return isNegative ? 0 - bits : bits;
}

// Truncated towards zero, the low 32 bits of a 64-bit number.
std::uint32_t readFraction(std::string_view number) {
  double value = 0;
  const char* const end = number.data() + number.size();
  const auto [stop, error] = std::from_chars(number.data(), end, value);
  const bool outOfRange = error == std::errc::result_out_of_range;
  if (stop != end || (error != std::errc() && !outOfRange)) return kUnreadable;
  if (outOfRange || !(std::abs(value) < 0x1p63)) return 0;
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(value));
}

// Reads the seed objects of a list.
class SeedParser {
 public:
  SeedParser(const char* end, const TerminalNames& names, void (*raiseUnknown)())
      : end_(end), names_(names), raiseUnknown_(raiseUnknown) {}

  // The position behind the object. The seed is an empty one ahead.
  const char* parse(const char* position, Seed& seed) {
    if (const char* next = parseUsual(position, seed)) return next;
    seed = {};
    json_ = position;
    found_ = 0;
    do {
      position = takeField(jsonSkipSpace(position + 1), seed);
      if (!position) rejectEnd();
      position = jsonSkipSpace(position);
    } while (*position == ',');
    if (*position != '}') rejectEnd();
    if (found_ != kAllRequired) rejectFields();
    return position + 1;
  }

 private:
  enum : unsigned { kTerminal = 1, kCost = 2, kConstraints = 4, kAllRequired = 7 };

  // The form in which coordinators write nearly all seeds; null for any other, whatever it is.
  const char* parseUsual(const char* position, Seed& seed) const {
    const char* const name = behind(position, "{\"terminal\":\"");
    if (!name) return nullptr;
    const char* const nameEnd = jsonFindQuote(name, end_);
    const char* const cost = behind(nameEnd, "\",\"cost\":");
    if (!cost) return nullptr;
    seed.terminal = names_.find({name, static_cast<std::size_t>(nameEnd - name)});
    const char* const costEnd = takeUsualCost(cost, seed);
    if (!costEnd || seed.terminal == TerminalNames::kNone) return nullptr;
    const char* const rest = behind(costEnd, ",\"constraints\":{}");
    if (!rest || *rest == '}') return rest ? rest + 1 : nullptr;
    const char* const token = behind(rest, ",\"srcDeviceToken\":\"");
    if (!token) return nullptr;
    const char* const tokenEnd = jsonSkipPlain(token, end_);
    seed.token = {token, static_cast<std::size_t>(tokenEnd - token)};
    return behind(tokenEnd, "\"}");
  }

  // Digits, as many as always fit.
  const char* takeUsualCost(const char* position, Seed& seed) const {
    constexpr std::ptrdiff_t kMostDigits = 9;
    const char* next = position;
    for (; jsonIsDigit(*next); ++next) {
      seed.cost = seed.cost * 10 + static_cast<std::uint32_t>(*next - '0');
    }
    return next != position && next - position <= kMostDigits ? next : nullptr;
  }

  // The position behind these bytes, if they stand here.
  template <std::size_t Size>
  const char* behind(const char* position, const char (&text)[Size]) const {
    constexpr std::ptrdiff_t kLength = Size - 1;
    const bool isHere =
        end_ - position >= kLength && std::memcmp(position, text, std::size_t{kLength}) == 0;
    return isHere ? position + kLength : nullptr;
  }

  // The position behind a key and its value, or null.
  const char* takeField(const char* position, Seed& seed) {
    if (const char* value = findValue(position, "\"terminal\"")) return takeTerminal(value, seed);
    if (const char* value = findValue(position, "\"cost\"")) return takeCost(value, seed);
    if (const char* value = findValue(position, "\"constraints\"")) return takeConstraints(value);
    if (const char* value = findValue(position, "\"srcDeviceToken\"")) {
      return takeToken(value, seed);
    }
    // The object or array of an unknown key is not walked: the seed ends badly at its bracket.
    const char* const value = jsonScanKey(position, end_);
    return value ? jsonScanScalar(value, end_) : nullptr;
  }

  // The value of a key, if it is this one.
  template <std::size_t Size>
  const char* findValue(const char* position, const char (&key)[Size]) const {
    const char* const colon = behind(position, key);
    return colon ? jsonSkipColon(colon) : nullptr;
  }

  const char* takeTerminal(const char* value, Seed& seed) {
    const char* const next = scanString(value, "terminal name must be a string");
    seed.terminal = names_.find(jsonContent(value, next));
    if (seed.terminal == TerminalNames::kNone) raiseUnknown_();
    found_ |= kTerminal;
    return next;
  }

  const char* takeCost(const char* value, Seed& seed) {
    const tJsonNumber number = jsonScanNumber(value);
    if (!number.next) raiseInvalid("cost must be a number", json_, OSTREL_HERE);
    const std::string_view text(value, static_cast<std::size_t>(number.next - value));
    seed.cost = number.isFloat ? readFraction(text) : readInteger(text);
    found_ |= kCost;
    return number.next;
  }

  const char* takeConstraints(const char* value) {
    const char* const next = *value == '{' ? skipObject(value) : nullptr;
    if (!next) raiseInvalid(kConstraintsMissing, json_, OSTREL_HERE);
    found_ |= kConstraints;
    return next;
  }

  const char* takeToken(const char* value, Seed& seed) const {
    const char* const next = scanString(value, "srcDeviceToken name must be a string");
    seed.token = jsonContent(value, next);
    return next;
  }

  // Constraints are empty, mostly.
  const char* skipObject(const char* position) const {
    const char* const inside = jsonSkipSpace(position + 1);
    return *inside == '}' ? inside + 1 : jsonScanValue(position, end_);
  }

  const char* scanString(const char* position, const char* message) const {
    const char* const next = jsonScanString(position, end_);
    if (!next) raiseInvalid(message, json_, OSTREL_HERE);
    return next;
  }

  // Of a seed that lacks a required field.
  [[noreturn]] void rejectFields() const {
    if (!(found_ & kTerminal)) raiseInvalid("terminal field missing", json_, OSTREL_HERE);
    if (!(found_ & kCost)) raiseInvalid("cost field missing or invalid", json_, OSTREL_HERE);
    raiseInvalid(kConstraintsMissing, json_, OSTREL_HERE);
  }

  // An object that goes on in no valid way.
  [[noreturn]] void rejectEnd() const {
    if (found_ != kAllRequired) rejectFields();
    raiseInvalid(kSeedMustBeObject, OSTREL_HERE);
  }

  const char* end_;
  const TerminalNames& names_;
  void (*raiseUnknown_)();
  const char* json_ = nullptr;  // from the seed's first byte to the end of the list
  unsigned found_ = 0;
};

// Walks the elements of a list: `takeElement(position)` answers the position behind one. A comma
// before the closing bracket is accepted, and what follows an element other than a comma ends the
// list in silence.
template <class TakeElement>
void walkList(const char* json, TakeElement takeElement) {
  const char* position = jsonSkipSpace(json);
  if (*position != '[') return;
  position = jsonSkipSpace(position + 1);
  while (*position != ']') {
    position = jsonSkipSpace(takeElement(position));
    if (*position != ',') return;
    position = jsonSkipSpace(position + 1);
  }
}

// Writes one element, into room enough for it.
class ElementWriter {
 public:
  explicit ElementWriter(char* position) : position_(position) {}

  template <std::size_t Size>
  ElementWriter& literal(const char (&text)[Size]) {
    std::memcpy(position_, text, Size - 1);
    position_ += Size - 1;
    return *this;
  }
  // Names of 8 to 16 bytes, which is nearly all, are written as two words that may overlap.
  ElementWriter& text(std::string_view json) {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    const std::size_t size = json.size();
    if (size < kWord || size > 2 * kWord) {
      std::memcpy(position_, json.data(), size);
    } else {
      std::memcpy(position_, json.data(), kWord);
      std::memcpy(position_ + size - kWord, json.data() + size - kWord, kWord);
    }
    position_ += size;
    return *this;
  }
  template <class Number>
  ElementWriter& number(Number value) {
    if (value < 10) {
      *position_++ = static_cast<char>('0' + value);
    } else {
      position_ = std::to_chars(position_, position_ + kLongestNumber, value).ptr;
    }
    return *this;
  }
  char* end() const { return position_; }

 private:
  static constexpr std::ptrdiff_t kLongestNumber = 20;

  char* position_;
};

}  // namespace

void parseSeedList(const char* json, const TerminalNames& names, void (*raiseUnknown)(),
                   std::vector<Seed>& seeds) {
  seeds.clear();
  SeedParser parser(json + std::strlen(json), names, raiseUnknown);
  walkList(json, [&](const char* position) {
    if (*position != '{') raiseInvalid(kSeedMustBeObject, OSTREL_HERE);
    Seed seed;
    const char* const next = parser.parse(position, seed);
    seeds.push_back(seed);
    return next;
  });
}

void parseTerminalList(const char* json, const TerminalNames& names,
                       std::vector<std::uint32_t>& terminals) {
  terminals.clear();
  const char* const end = json + std::strlen(json);
  walkList(json, [&](const char* position) {
    const char* const name = position + 1;
    const char* const nameEnd = *position == '"' ? jsonFindQuote(name, end) : end;
    if (nameEnd != end) {
      const std::uint32_t terminal = names.find({name, static_cast<std::size_t>(nameEnd - name)});
      if (terminal != TerminalNames::kNone) {
        terminals.push_back(terminal);
        return nameEnd + 1;
      }
    }
    const char* const next = jsonScanString(position, end);
    if (!next) raiseInvalid("Terminals must be strings", json, OSTREL_HERE);
    return next;
  });
}

std::string quote(const std::string& text) {
  std::string quoted(jsonEscapedLength(text.c_str()) + 2, '"');
  jsonEscape(quoted.data() + 1, text.c_str());
  return quoted;
}

Reply::Reply() { *end_++ = '['; }

inline char* Reply::roomFor(std::size_t longest) {
  if (static_cast<std::size_t>(limit_ - end_) < longest) enlarge(longest);
  return end_;
}

void Reply::addText(std::string_view json) {
  end_ = ElementWriter(roomFor(json.size() + sizeof ",")).text(json).literal(",").end();
}

void Reply::addRoute(std::uint32_t ticket, std::string_view destination, std::uint32_t seedIndex) {
  ElementWriter element(roomFor(kLongestElement + destination.size()));
  element.literal("{\"ticket\":").number(ticket);
  element.literal(",\"destination\":").text(destination);
  element.literal(",\"cost\":0,\"indexOfStartingSeed\":").number(seedIndex);
  end_ = element.literal(",\"constraints\":{}},").end();
}

void Reply::addConflict(const ConflictRecord& conflict) {
  ElementWriter element(roomFor(kLongestElement));
  element.literal("{\"sessionId\":").number(conflict.session);
  end_ = element.literal(",\"ticket\":").number(conflict.ticket).literal("},").end();
}

std::string_view Reply::close() {
  if (end_[-1] == ',') --end_;
  *end_++ = ']';
  return {text_, static_cast<std::size_t>(end_ - text_)};
}

std::size_t Reply::bufferSize() const {
  constexpr std::size_t kSmallest = 256;
  return std::bit_ceil(std::max(kSmallest, static_cast<std::size_t>(end_ - text_) + 2));
}

void Reply::enlarge(std::size_t needed) {
  const auto length = static_cast<std::size_t>(end_ - text_);
  const std::size_t capacity = std::bit_ceil(length + needed);
  auto larger = std::make_unique_for_overwrite<char[]>(capacity);
  std::memcpy(larger.get(), text_, length);
  larger_ = std::move(larger);
  text_ = larger_.get();
  end_ = text_ + length;
  limit_ = text_ + capacity;
}

}  // namespace telmar
