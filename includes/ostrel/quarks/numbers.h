#ifndef OSTREL_QUARKS_NUMBERS_H
#define OSTREL_QUARKS_NUMBERS_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace varmex::inline nOSTRELS100 {

// The C library's text-to-number conversions as they are where `long` has 32 bits, the same on
// every platform and under every locale.

// White space of the "C" locale.
constexpr bool isWhiteSpace(char byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

struct tUnsignedText {
  std::uint32_t value;
  const char* end;  // behind what was read; the start of the text when nothing was
  bool overflowed;  // and then the value is 4294967295
};

// strtoul with base 0: optional white space and sign, then hexadecimal behind 0x, octal behind 0,
// else decimal. A minus sign negates modulo 2^32.
tUnsignedText readUnsignedBase0(const char* text);

struct tSignedText {
  std::int32_t value;
  const char* end;  // behind what was read; null when the text does not start with a number
  bool overflowed;  // and then the value is the bound that was passed
};

// strtol with base 10.
tSignedText readSignedAtLength(const char* text);

// The same, quicker for what numbers mostly are: a few digits and nothing ahead of them.
inline tSignedText readSigned(const char* text) {
  constexpr std::ptrdiff_t kMostDigits = 9;  // that always fit
  auto value = static_cast<std::uint32_t>(*text - '0');
  if (value > 9) return readSignedAtLength(text);
  const char* end = text + 1;
  for (std::uint32_t digit = 0; (digit = static_cast<std::uint32_t>(*end - '0')) < 10; ++end) {
    value = value * 10 + digit;
  }
  if (end - text > kMostDigits) return readSignedAtLength(text);
  return {static_cast<std::int32_t>(value), end, false};
}

}  // namespace varmex::inline nOSTRELS100

#endif
