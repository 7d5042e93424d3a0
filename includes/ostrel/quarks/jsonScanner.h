#ifndef OSTREL_QUARKS_JSONSCANNER_H
#define OSTREL_QUARKS_JSONSCANNER_H

#include <cstddef>
#include <string_view>

namespace varmex::inline nOSTRELS100 {

// Walks NUL-terminated JSON text in place: nothing is copied, unescaped or allocated, and nesting
// costs no stack. The acceptance of numbers is deliberately lax: "-", "1." and "007" pass.

// Nesting beyond this depth fails the scan.
inline constexpr std::size_t kJsonMaxDepth = 4096;

bool jsonIsSpace(char byte);

const char* jsonSkipSpace(const char* position);

// Each answers the position behind the token at `position`, or null when there is none or it is
// malformed.
const char* jsonScanString(const char* position);
const char* jsonScanNumber(const char* position);
const char* jsonScanLiteral(const char* position);

enum class tJsonType { none, null, boolean, number, string, array, object };

// A value as it is seen without walking into it: of an object or array there is the opening bracket
// alone, and `next` stands on it.
struct tJsonToken {
  tJsonType type;            // none when there is no value
  std::string_view content;  // of a string without its quotes, raw; of a number its text
  bool isFloat;              // of a number: it has a fraction or an exponent
  const char* next;          // behind the token; null without one
};
tJsonToken jsonScanToken(const char* position);

struct tJsonKey {
  std::string_view name;  // raw
  const char* next;       // at the value; null when there is no string with a colon behind it
};
tJsonKey jsonScanKey(const char* position);

// The position behind the value at `position`, containers walked whole; null when it is malformed.
const char* jsonScanValue(const char* position);

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
