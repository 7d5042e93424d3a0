#include "ostrel/quarks/jsonScanner.h"

#include <cstdint>
#include <cstring>

namespace varmex::inline nOSTRELS100 {

namespace {

bool isHexDigit(char byte) {
  return jsonIsDigit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
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

const char* scanLiteral(const char* position) {
  for (const std::string_view literal : {"true", "false", "null"}) {
    if (std::strncmp(position, literal.data(), literal.size()) == 0) {
      return position + literal.size();
    }
  }
  return nullptr;
}

// The containers that are open around a position, innermost last: one bit each, set for an object.
class tOpenContainers {
 public:
  bool enter(char bracket) {
    if (depth_ == kJsonMaxDepth) return false;
    const std::uint64_t bit = bitOf(depth_);
    std::uint64_t& word = bits_[depth_ / 64];
    if (depth_ % 64 == 0) word = 0;
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
  // Each word is written when its first level is entered; most texts need the first one alone.
  std::uint64_t bits_[kJsonMaxDepth / 64];
  std::size_t depth_ = 0;
};

}  // namespace

const char* jsonScanEscapes(const char* position, const char* end) {
  while (*position == '\\') {
    position = scanEscape(position);
    if (!position) return nullptr;
    position = jsonSkipPlain(position, end);
  }
  return *position == '"' ? position + 1 : nullptr;
}

const char* jsonScanScalar(const char* position, const char* end) {
  if (*position == '"') return jsonScanString(position, end);
  if (const char* next = jsonScanNumber(position).next) return next;
  return scanLiteral(position);
}

const char* jsonScanValue(const char* position, const char* end) {
  if (*position != '{' && *position != '[') return jsonScanScalar(position, end);
  tOpenContainers open;
  bool atValue = true;  // else behind one
  while (true) {
    if (atValue) {
      if (*position == '{' || *position == '[') {
        if (!open.enter(*position)) return nullptr;
        position = jsonSkipSpace(position + 1);
        if (*position != open.closingBracket()) {
          if (open.inObject()) position = jsonScanKey(position, end);
          if (!position) return nullptr;
          continue;
        }
      } else {
        position = jsonScanScalar(position, end);
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
      if (open.inObject()) position = jsonScanKey(position, end);
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
  const char* const next = jsonScanValue(start, start + std::strlen(start));
  if (!next || *jsonSkipSpace(next) != '\0') return nullptr;
  return next - 1;
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
