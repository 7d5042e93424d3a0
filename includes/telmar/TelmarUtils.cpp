#include "telmar/TelmarUtils.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include "ostrel/quarks/failure.h"
#include "ostrel/quarks/jsonScanner.h"

namespace telmar {

namespace {

using namespace varmex;

constexpr const char* kSeedMustBeObject = "seed must be an object";
constexpr const char* kTerminalMissing = "terminal field missing";
constexpr const char* kCostMissing = "cost field missing or invalid";
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

constexpr std::size_t kUsualLength = 16;  // lists of which take one allocation

constexpr std::uint32_t kUnreadable = 0xFFFFFFFF;

// The digits of a cost below zero count modulo 2^32, and too many of them as the largest number.
std::uint32_t readInteger(std::string_view number) {
  const bool isNegative = number.starts_with('-');
  if (isNegative) number.remove_prefix(1);
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc()) return kUnreadable;
  return isNegative ? 0 - value : value;
}

// Truncated towards zero, the low 32 bits of a 64-bit number.
std::uint32_t readFraction(std::string_view number) {
  double value = 0;
  const char* const end = number.data() + number.size();
  const auto [stop, error] = std::from_chars(number.data(), end, value);
  const bool outOfRange = error == std::errc::result_out_of_range;
  if (stop != end || (error != std::errc() && !outOfRange)) return kUnreadable;
  if (outOfRange || !(std::abs(value) < 9.2e18)) return 0;
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(value));
}

std::uint32_t readCost(const tJsonToken& number) {
  return number.isFloat ? readFraction(number.content) : readInteger(number.content);
}

// Reads one seed object.
class SeedParser {
 public:
  SeedParser(const char* json, const TerminalFinder& finder) : json_(json), finder_(finder) {}

  // The position behind the object.
  const char* parse(Seed& seed) {
    const char* position = jsonSkipSpace(json_ + 1);
    if (*position == '}') raiseInvalid(kTerminalMissing, json_, OSTREL_HERE);
    tJsonKey key = jsonScanKey(position);
    if (!key.next) raiseInvalid(kTerminalMissing, json_, OSTREL_HERE);
    while (true) {
      position = jsonSkipSpace(takeValue(key, seed));
      if (*position == '}') {
        requireFields();
        return position + 1;
      }
      if (*position == ',') key = jsonScanKey(jsonSkipSpace(position + 1));
      if (*position != ',' || !key.next) rejectEnd();
    }
  }

 private:
  // The position behind the value of a key.
  const char* takeValue(const tJsonKey& key, Seed& seed) {
    const tJsonToken value = jsonScanToken(key.next);
    if (key.name == "terminal") {
      requireType(value, tJsonType::string, "terminal name must be a string");
      seed.terminal = finder_.findForSeed(value.content);
      hasTerminal_ = true;
    } else if (key.name == "srcDeviceToken") {
      requireType(value, tJsonType::string, "srcDeviceToken name must be a string");
      seed.token = value.content;
    } else if (key.name == "cost") {
      requireType(value, tJsonType::number, "cost must be a number");
      seed.cost = readCost(value);
      hasCost_ = true;
    } else if (key.name == "constraints") {
      const char* const behind = *key.next == '{' ? jsonScanValue(key.next) : nullptr;
      if (!behind) raiseInvalid(kConstraintsMissing, json_, OSTREL_HERE);
      hasConstraints_ = true;
      return behind;
    }
    // The object or array of an unknown key is not walked: the seed ends badly at its bracket.
    if (!value.next) rejectEnd();
    return value.next;
  }

  void requireType(const tJsonToken& value, tJsonType type, const char* message) const {
    if (value.type != type) raiseInvalid(message, json_, OSTREL_HERE);
  }

  void requireFields() const {
    if (!hasTerminal_) raiseInvalid(kTerminalMissing, json_, OSTREL_HERE);
    if (!hasCost_) raiseInvalid(kCostMissing, json_, OSTREL_HERE);
    if (!hasConstraints_) raiseInvalid(kConstraintsMissing, json_, OSTREL_HERE);
  }

  // An object that goes on in no valid way.
  [[noreturn]] void rejectEnd() const {
    requireFields();
    raiseInvalid(kSeedMustBeObject, OSTREL_HERE);
  }

  const char* json_;  // from the seed's first byte to the end of the list
  const TerminalFinder& finder_;
  bool hasTerminal_ = false;
  bool hasCost_ = false;
  bool hasConstraints_ = false;
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

// Text put together on the stack and handed to the writer as one element.
class ElementText {
 public:
  ElementText& literal(std::string_view text) {
    std::memcpy(end_, text.data(), text.size());
    end_ += text.size();
    return *this;
  }
  ElementText& number(std::uint64_t value) {
    end_ = std::to_chars(end_, text_ + sizeof text_, value).ptr;
    return *this;
  }
  ElementText& string(const char* value) {
    *end_++ = '"';
    end_ = jsonEscape(end_, value);
    *end_++ = '"';
    return *this;
  }
  const char* finish() {
    *end_ = '\0';
    return text_;
  }

 private:
  char text_[512];  // terminal names and numbers are short
  char* end_ = text_;
};

}  // namespace

std::vector<Seed> parseSeedList(const char* json, const TerminalFinder& finder) {
  std::vector<Seed> seeds;
  seeds.reserve(kUsualLength);
  walkList(json, [&](const char* position) {
    if (*position != '{') raiseInvalid(kSeedMustBeObject, OSTREL_HERE);
    return SeedParser(position, finder).parse(seeds.emplace_back());
  });
  return seeds;
}

std::vector<std::uint32_t> parseTerminalList(const char* json, const TerminalFinder& finder) {
  std::vector<std::uint32_t> terminals;
  terminals.reserve(kUsualLength);
  walkList(json, [&](const char* position) {
    const tJsonToken token = jsonScanToken(position);
    if (token.type != tJsonType::string) {
      raiseInvalid("Terminals must be strings", json, OSTREL_HERE);
    }
    if (const auto terminal = finder.findForDestination(token.content)) {
      terminals.push_back(*terminal);
    }
    return token.next;
  });
  return terminals;
}

Reply::Reply() : buffer_(256), cursor_(buffer_.data()) {
  statusFormatText(buffer_.data(), buffer_.size(), "[]");
}

void Reply::addString(const char* value) {
  cursor_ = jsonAddString(cursor_, nullptr, value, grow, this);
}

void Reply::addRoute(const RouteReply& route) {
  ElementText element;
  element.literal("{\"ticket\":").number(route.ticket);
  element.literal(",\"destination\":").string(route.destination);
  element.literal(",\"cost\":").number(route.cost);
  element.literal(",\"indexOfStartingSeed\":").number(route.seedIndex);
  element.literal(",\"constraints\":{}}");
  cursor_ = jsonAddRaw(cursor_, nullptr, element.finish(), grow, this);
}

void Reply::addConflict(const ConflictRecord& conflict) {
  ElementText element;
  element.literal("{\"sessionId\":").number(conflict.session);
  element.literal(",\"ticket\":").number(conflict.ticket).literal("}");
  cursor_ = jsonAddRaw(cursor_, nullptr, element.finish(), grow, this);
}

char* Reply::grow(char* cursor, void* context) {
  std::vector<char>& buffer = static_cast<Reply*>(context)->buffer_;
  const std::ptrdiff_t offset = cursor - buffer.data();
  buffer.back() = '\0';
  buffer.resize(2 * buffer.size());
  buffer.back() = 'J';
  return buffer.data() + offset;
}

}  // namespace telmar
