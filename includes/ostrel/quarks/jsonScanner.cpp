#include "ostrel/quarks/jsonScanner.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace varmex::inline nOSTRELS100 {

namespace {

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

bool isHexDigit(char byte) {
  return isDigit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
}

const char* skipDigits(const char* position) {
  while (isDigit(*position)) ++position;
  return position;
}

// The position behind the escape whose backslash stands at `position`, or null.
const char* scanEscape(const char* position) {
  const char kind = position[1];
  if (kind == '\0') return nullptr;
  if (std::strchr("\"/\\bfnrt", kind)) return position + 2;
  if (kind != 'u') return nullptr;
  for (int digit = 2; digit < 6; ++digit) {
    if (!isHexDigit(position[digit])) return nullptr;
  }
  return position + 6;
}

const char* scanScalar(const char* position) {
  if (const char* end = jsonScanString(position)) return end;
  if (const char* end = jsonScanNumber(position)) return end;
  return jsonScanLiteral(position);
}

// The containers that are open around a position, innermost last: one bit each, set for an object.
class tOpenContainers {
 public:
  bool enter(char bracket) {
    if (depth_ == kJsonMaxDepth) return false;
    const std::uint64_t bit = bitOf(depth_);
    std::uint64_t& word = bits_[depth_ / 64];
    word = bracket == '{' ? word | bit : word & ~bit;
    ++depth_;
    return true;
  }
  void leave() { --depth_; }
  bool isEmpty() const { return depth_ == 0; }
  bool inObject() const { return (bits_[(depth_ - 1) / 64] & bitOf(depth_ - 1)) != 0; }
  char closingBracket() const { return inObject() ? '}' : ']'; }

 private:
  static std::uint64_t bitOf(std::size_t level) { return std::uint64_t{1} << level % 64; }

  static_assert(kJsonMaxDepth % 64 == 0);
  // Each bit is written when its level is entered; most texts need the first few alone.
  std::uint64_t bits_[kJsonMaxDepth / 64];
  std::size_t depth_ = 0;
};

std::string_view between(const char* begin, const char* end) {
  return {begin, static_cast<std::size_t>(end - begin)};
}

// Bytes that a string can't hold as they are, and its closing quote.
constexpr std::array<bool, 256> makeSpecialBytes() {
  std::array<bool, 256> special{};
  for (std::size_t byte = 0; byte < 32; ++byte) special[byte] = true;
  special['"'] = true;
  special['\\'] = true;
  return special;
}

constexpr std::array<bool, 256> kSpecialBytes = makeSpecialBytes();

}  // namespace

bool jsonIsSpace(char byte) { return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t'; }

const char* jsonSkipSpace(const char* position) {
  while (jsonIsSpace(*position)) ++position;
  return position;
}

const char* jsonScanString(const char* position) {
  if (*position != '"') return nullptr;
  ++position;
  while (true) {
    while (!kSpecialBytes[static_cast<unsigned char>(*position)]) ++position;
    if (*position == '"') return position + 1;
    if (*position != '\\') return nullptr;
    position = scanEscape(position);
    if (!position) return nullptr;
  }
}

const char* jsonScanNumber(const char* position) {
  if (*position != '-' && !isDigit(*position)) return nullptr;
  position = skipDigits(position + 1);
  if (*position == '.') position = skipDigits(position + 1);
  if (*position == 'e' || *position == 'E') {
    const char next = position[1];
    if (next != '+' && next != '-' && !isDigit(next)) return nullptr;
    position = skipDigits(position + 2);
  }
  return position;
}

const char* jsonScanLiteral(const char* position) {
  for (const char* literal : {"true", "false", "null"}) {
    const std::size_t length = std::strlen(literal);
    if (std::strncmp(position, literal, length) == 0) return position + length;
  }
  return nullptr;
}

tJsonToken jsonScanToken(const char* position) {
  if (const char* end = jsonScanString(position)) {
    return {tJsonType::string, between(position + 1, end - 1), false, end};
  }
  if (const char* end = jsonScanNumber(position)) {
    const bool isFloat = skipDigits(position + 1) != end;
    return {tJsonType::number, between(position, end), isFloat, end};
  }
  if (*position == '{') return {tJsonType::object, {}, false, position};
  if (*position == '[') return {tJsonType::array, {}, false, position};
  if (const char* end = jsonScanLiteral(position)) {
    return {*position == 'n' ? tJsonType::null : tJsonType::boolean, {}, false, end};
  }
  return {tJsonType::none, {}, false, nullptr};
}

tJsonKey jsonScanKey(const char* position) {
  const char* const end = jsonScanString(position);
  if (!end) return {{}, nullptr};
  const std::string_view name = between(position + 1, end - 1);
  position = jsonSkipSpace(end);
  return {name, *position == ':' ? jsonSkipSpace(position + 1) : nullptr};
}

const char* jsonScanValue(const char* position) {
  if (*position != '{' && *position != '[') return scanScalar(position);
  tOpenContainers open;
  bool atValue = true;  // else behind one
  while (true) {
    if (atValue) {
      if (*position == '{' || *position == '[') {
        if (!open.enter(*position)) return nullptr;
        position = jsonSkipSpace(position + 1);
        if (*position != open.closingBracket()) {
          if (open.inObject()) position = jsonScanKey(position).next;
          if (!position) return nullptr;
          continue;
        }
      } else {
        position = scanScalar(position);
        if (!position) return nullptr;
        position = jsonSkipSpace(position);
      }
      atValue = false;
    } else if (*position == open.closingBracket()) {
      open.leave();
      ++position;
      if (open.isEmpty()) return position;
      position = jsonSkipSpace(position);
    } else if (*position == ',') {
      position = jsonSkipSpace(position + 1);
      if (open.inObject()) position = jsonScanKey(position).next;
      if (!position) return nullptr;
      atValue = true;
    } else {
      return nullptr;
    }
  }
}

const char* jsonFindEnd(const char* text) {
  const char* start = jsonSkipSpace(text);
  if (*start != '{' && *start != '[') return nullptr;
  const char* end = jsonScanValue(start);
  if (!end || *jsonSkipSpace(end) != '\0') return nullptr;
  return end - 1;
}

bool jsonIsEmptyPair(const char* position) {
  const char* open = position;
  const char* close = position;
  if (*position == '{' || *position == '[') {
    close = jsonSkipSpace(position + 1);
  } else if (*position == '}' || *position == ']') {
    --open;
    while (jsonIsSpace(*open)) --open;
  } else {
    return false;
  }
  return (*open == '{' && *close == '}') || (*open == '[' && *close == ']');
}

}  // namespace varmex::inline nOSTRELS100
