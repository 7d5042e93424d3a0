#include "ostrel/quarks/numbers.h"

#include <algorithm>
#include <limits>

namespace varmex::inline nOSTRELS100 {

namespace {

struct tMagnitude {
  std::uint64_t value;  // 2^32 for anything that needs more than 32 bits
  const char* end;
};

constexpr std::uint64_t kTooLarge = std::uint64_t{1} << 32;

// At least `Base` for a byte that is no digit.
template <unsigned Base>
unsigned digitValue(char byte) {
  if constexpr (Base == 16) {
    if (byte >= 'a' && byte <= 'f') return static_cast<unsigned>(byte - 'a' + 10);
    if (byte >= 'A' && byte <= 'F') return static_cast<unsigned>(byte - 'A' + 10);
    return byte >= '0' && byte <= '9' ? static_cast<unsigned>(byte - '0') : Base;
  } else {
    return static_cast<unsigned>(byte - '0');
  }
}

template <unsigned Base>
tMagnitude readDigits(const char* text) {
  tMagnitude result{0, text};
  for (unsigned digit = 0; (digit = digitValue<Base>(*result.end)) < Base; ++result.end) {
    result.value = std::min(result.value * Base + digit, kTooLarge);
  }
  return result;
}

tMagnitude readDigits(const char* text, int base) {
  switch (base) {
    case 16: return readDigits<16>(text);
    case 8: return readDigits<8>(text);
    default: return readDigits<10>(text);
  }
}

struct tSign {
  bool negative;
  const char* end;
};

tSign readSign(const char* text) {
  while (isWhiteSpace(*text)) ++text;
  if (*text == '-') return {true, text + 1};
  return {false, *text == '+' ? text + 1 : text};
}

}  // namespace

tUnsignedText readUnsignedBase0(const char* text) {
  const tSign sign = readSign(text);
  const char* digits = sign.end;
  int base = 10;
  if (*digits == '0') {
    const bool isHex = (digits[1] == 'x' || digits[1] == 'X') && digitValue<16>(digits[2]) < 16;
    base = isHex ? 16 : 8;
    if (isHex) digits += 2;
  }
  const tMagnitude magnitude = readDigits(digits, base);
  if (magnitude.end == digits) return {0, text, false};
  if (magnitude.value >= kTooLarge) {
    return {std::numeric_limits<std::uint32_t>::max(), magnitude.end, true};
  }
  const auto value = static_cast<std::uint32_t>(magnitude.value);
  return {sign.negative ? 0 - value : value, magnitude.end, false};
}

tSignedText readSignedAtLength(const char* text) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
  const tSign sign = readSign(text);
  const tMagnitude magnitude = readDigits<10>(sign.end);
  if (magnitude.end == sign.end) return {0, nullptr, false};
  const std::int64_t bound = sign.negative ? kMax + 1 : kMax;
  const auto size = static_cast<std::int64_t>(magnitude.value);
  const bool overflowed = size > bound;
  const std::int64_t value = overflowed ? bound : size;
  return {static_cast<std::int32_t>(sign.negative ? -value : value), magnitude.end, overflowed};
}

}  // namespace varmex::inline nOSTRELS100
