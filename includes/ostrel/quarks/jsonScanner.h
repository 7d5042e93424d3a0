#ifndef OSTREL_QUARKS_JSONSCANNER_H
#define OSTREL_QUARKS_JSONSCANNER_H

#include <emmintrin.h>

#include <bit>
#include <cstddef>
#include <string_view>

namespace varmex::inline nOSTRELS100 {

// Walks JSON text in place: nothing is copied, unescaped or allocated, and nesting costs no stack.
// The text ends at a NUL, which `end` points to: strings are read in blocks, none of which reaches
// behind it. The acceptance of numbers is deliberately lax: "-", "1." and "007" pass.

// Nesting beyond this depth fails the scan.
inline constexpr std::size_t kJsonMaxDepth = 4096;

inline bool jsonIsSpace(char byte) {
  return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t';
}

inline const char* jsonSkipSpace(const char* position) {
  while (jsonIsSpace(*position)) ++position;
  return position;
}

inline bool jsonIsDigit(char byte) { return byte >= '0' && byte <= '9'; }

inline const char* jsonSkipDigits(const char* position) {
  while (jsonIsDigit(*position)) ++position;
  return position;
}

// One bit for each byte that a string can't hold as it is: quotes, backslashes and bytes below 32.
inline unsigned jsonFindSpecial(__m128i block) {
  const __m128i quotes = _mm_cmpeq_epi8(block, _mm_set1_epi8('"'));
  const __m128i backslashes = _mm_cmpeq_epi8(block, _mm_set1_epi8('\\'));
  const __m128i controls = _mm_cmpeq_epi8(_mm_min_epu8(block, _mm_set1_epi8(31)), block);
  const __m128i special = _mm_or_si128(_mm_or_si128(quotes, backslashes), controls);
  return static_cast<unsigned>(_mm_movemask_epi8(special));
}

// To the first such byte; the NUL is one.
inline const char* jsonSkipPlain(const char* position, const char* end) {
  for (; end - position >= 16; position += 16) {
    const auto block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(position));
    if (const unsigned special = jsonFindSpecial(block)) {
      return position + std::countr_zero(special);
    }
  }
  while (*position != '"' && *position != '\\' && static_cast<unsigned char>(*position) >= 32) {
    ++position;
  }
  return position;
}

// To the next quote, or to the end of the text.
inline const char* jsonFindQuote(const char* position, const char* end) {
  const __m128i quote = _mm_set1_epi8('"');
  for (; end - position >= 16; position += 16) {
    const auto block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(position));
    const auto quotes = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, quote)));
    if (quotes) return position + std::countr_zero(quotes);
  }
  while (*position != '"' && position != end) ++position;
  return position;
}

// The position behind a string, given that of its first backslash or of the byte that ends it
// badly.
const char* jsonScanEscapes(const char* position, const char* end);

// Each of the scans answers the position behind what it finds, or null when there is no such thing
// or it is malformed.
inline const char* jsonScanString(const char* position, const char* end) {
  if (*position != '"') return nullptr;
  position = jsonSkipPlain(position + 1, end);
  return *position == '"' ? position + 1 : jsonScanEscapes(position, end);
}

// What is between the quotes of a string, raw.
inline std::string_view jsonContent(const char* string, const char* next) {
  return {string + 1, static_cast<std::size_t>(next - string) - 2};
}

struct tJsonNumber {
  const char* next;
  bool isFloat;  // it has a fraction or an exponent
};
inline tJsonNumber jsonScanNumber(const char* position) {
  if (*position != '-' && !jsonIsDigit(*position)) return {nullptr, false};
  const char* const digitsEnd = jsonSkipDigits(position + 1);
  position = digitsEnd;
  if (*position == '.') position = jsonSkipDigits(position + 1);
  if (*position == 'e' || *position == 'E') {
    const char next = position[1];
    if (next != '+' && next != '-' && !jsonIsDigit(next)) return {nullptr, false};
    position = jsonSkipDigits(position + 2);
  }
  return {position, position != digitsEnd};
}

// A string, a number, true, false or null.
const char* jsonScanScalar(const char* position, const char* end);

// From behind a key to its value; null without a colon in between.
inline const char* jsonSkipColon(const char* position) {
  position = jsonSkipSpace(position);
  return *position == ':' ? jsonSkipSpace(position + 1) : nullptr;
}

// A key with its colon, to the value.
inline const char* jsonScanKey(const char* position, const char* end) {
  const char* const next = jsonScanString(position, end);
  return next ? jsonSkipColon(next) : nullptr;
}

// Any value, containers walked whole.
const char* jsonScanValue(const char* position, const char* end);

// The final closing bracket of a text that is one JSON object or array, else null.
const char* jsonFindEnd(const char* text);
inline char* jsonFindEnd(char* text) {
  return const_cast<char*>(jsonFindEnd(static_cast<const char*>(text)));
}

// Whether the bracket at `position` belongs to a pair with nothing but white space between. A
// closing bracket looks backward, so its pair must lie in the same text.
bool jsonIsEmptyPair(const char* position);

}  // namespace varmex::inline nOSTRELS100

#endif
