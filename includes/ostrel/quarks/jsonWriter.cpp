#include "ostrel/quarks/jsonWriter.h"

#include <charconv>
#include <cstring>
#include <initializer_list>

#include "ostrel/quarks/jsonScanner.h"

namespace varmex::inline nOSTRELS100 {

namespace {

// The letter behind the backslash of a short escape, 'u' for the long form, 0 for a plain byte.
char escapeLetter(unsigned char byte) {
  switch (byte) {
    case '\b': return 'b';
    case '\t': return 't';
    case '\n': return 'n';
    case '\f': return 'f';
    case '\r': return 'r';
    case '"': return '"';
    case '\\': return '\\';
    default: return byte < 32 || byte == 127 ? 'u' : '\0';
  }
}

// The bytes behind a text are NUL up to the mark, so whatever is free lies ahead of a 'J'.
bool hasFreeBytes(const char* terminator, std::size_t needed) {
  return std::memchr(terminator + 1, 'J', needed) == nullptr;
}

// A value as it will stand in the text.
struct tValue {
  const char* text;
  bool isString;

  std::size_t length() const { return isString ? jsonEscapedLength(text) + 2 : std::strlen(text); }

  char* write(char* destination) const {
    if (!isString) {
      const std::size_t size = std::strlen(text);
      std::memcpy(destination, text, size);
      return destination + size;
    }
    *destination++ = '"';
    destination = jsonEscape(destination, text);
    *destination++ = '"';
    return destination;
  }
};

char* addPair(char* cursor, const char* key, const tValue& value) {
  if (!cursor) return nullptr;
  const std::size_t keyLength = key ? jsonEscapedLength(key) + 3 : 0;
  char* place = jsonMakeRoom(cursor, keyLength + value.length());
  if (!place) return nullptr;
  if (key) {
    *place++ = '"';
    place = jsonEscape(place, key);
    *place++ = '"';
    *place++ = ':';
  }
  return value.write(place);
}

char* addPair(char* cursor, const char* key, const tValue& value, tJsonGrow grow, void* context) {
  while (cursor) {
    if (char* next = addPair(cursor, key, value)) return next;
    if (!grow) return nullptr;
    cursor = grow(cursor, context);
  }
  return nullptr;
}

constexpr std::size_t kNumberBufferSize = 64;

class tNumberText {
 public:
  template <class Number>
  explicit tNumberText(Number value) {
    *std::to_chars(text_, text_ + sizeof text_ - 1, value).ptr = '\0';
  }
  tValue value() const { return {text_, false}; }

 private:
  char text_[kNumberBufferSize];
};

}  // namespace

char* jsonMakeRoom(char* position, std::size_t length) {
  const bool atFront = *position == '{' || *position == '[';
  char* const insertion = atFront ? position + 1 : position;
  const bool isEmpty = *insertion == '\0' || jsonIsEmptyPair(insertion);
  const std::size_t needed = length + (isEmpty ? 0 : 1);
  const std::size_t tail = std::strlen(insertion);
  if (!hasFreeBytes(insertion + tail, needed)) return nullptr;
  std::memmove(insertion + needed, insertion, tail + 1);
  if (isEmpty) return insertion;
  if (atFront) {
    insertion[length] = ',';
    return insertion;
  }
  *insertion = ',';
  return insertion + 1;
}

std::size_t jsonEscapedLength(const char* source) {
  std::size_t length = 0;
  for (; *source; ++source) {
    const char letter = escapeLetter(static_cast<unsigned char>(*source));
    length += letter == '\0' ? 1 : letter == 'u' ? 6 : 2;
  }
  return length;
}

char* jsonEscape(char* destination, const char* source) {
  static constexpr char kHexDigits[] = "0123456789abcdef";
  for (; *source; ++source) {
    const auto byte = static_cast<unsigned char>(*source);
    const char letter = escapeLetter(byte);
    if (letter == '\0') {
      *destination++ = *source;
      continue;
    }
    *destination++ = '\\';
    *destination++ = letter;
    if (letter == 'u') {
      for (const char digit : {'0', '0', kHexDigits[byte >> 4], kHexDigits[byte & 15]}) {
        *destination++ = digit;
      }
    }
  }
  return destination;
}

char* jsonAddString(char* cursor, const char* key, const char* value, tJsonGrow grow,
                    void* context) {
  return addPair(cursor, key, {value, true}, grow, context);
}

char* jsonAddI32(char* cursor, const char* key, std::int32_t value, tJsonGrow grow, void* context) {
  return addPair(cursor, key, tNumberText(value).value(), grow, context);
}

char* jsonAddU32(char* cursor, const char* key, std::uint32_t value, tJsonGrow grow,
                 void* context) {
  return addPair(cursor, key, tNumberText(value).value(), grow, context);
}

char* jsonAddU64(char* cursor, const char* key, std::uint64_t value, tJsonGrow grow,
                 void* context) {
  return addPair(cursor, key, tNumberText(value).value(), grow, context);
}

char* jsonAddRaw(char* cursor, const char* key, const char* value, tJsonGrow grow, void* context) {
  return addPair(cursor, key, {value, false}, grow, context);
}

char* jsonAddObject(char* cursor, const char* key, tJsonGrow grow, void* context) {
  return jsonAddRaw(cursor, key, "{}", grow, context);
}

char* jsonAddString(char* cursor, const char* key, const char* value) {
  return jsonAddString(cursor, key, value, nullptr, nullptr);
}

char* jsonAddI32(char* cursor, const char* key, std::int32_t value) {
  return jsonAddI32(cursor, key, value, nullptr, nullptr);
}

char* jsonAddU32(char* cursor, const char* key, std::uint32_t value) {
  return jsonAddU32(cursor, key, value, nullptr, nullptr);
}

char* jsonAddU64(char* cursor, const char* key, std::uint64_t value) {
  return jsonAddU64(cursor, key, value, nullptr, nullptr);
}

char* jsonAddRaw(char* cursor, const char* key, const char* value) {
  return jsonAddRaw(cursor, key, value, nullptr, nullptr);
}

char* jsonAddObject(char* cursor, const char* key) {
  return jsonAddObject(cursor, key, nullptr, nullptr);
}

void jsonAddSourcePosition(tStatusWriter& writer, const tSourcePosition& position) {
  char* cursor = writer.cursor;
  cursor = jsonAddString(cursor, "file", position.file, writer.grow, writer.context);
  cursor = jsonAddI32(cursor, "line", static_cast<std::int32_t>(position.line), writer.grow,
                      writer.context);
  if (position.component) {
    cursor = jsonAddString(cursor, "component", position.component, writer.grow, writer.context);
  }
  writer.cursor = cursor;
}

}  // namespace varmex::inline nOSTRELS100
