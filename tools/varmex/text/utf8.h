#ifndef TOOLS_VARMEX_TEXT_UTF8_H
#define TOOLS_VARMEX_TEXT_UTF8_H

#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

// Whether bytes are UTF-8: no form longer than needed, no surrogates, nothing beyond U+10FFFF.
inline bool isUtf8(std::string_view text) {
  const auto byteAt = [text](std::size_t n) { return static_cast<unsigned char>(text[n]); };
  for (std::size_t n = 0; n < text.size();) {
    const unsigned first = byteAt(n);
    const std::size_t tail = first < 0x80                    ? 0
                             : first >= 0xC2 && first < 0xE0 ? 1
                             : first >= 0xE0 && first < 0xF0 ? 2
                             : first >= 0xF0 && first < 0xF5 ? 3
                                                             : text.size();
    if (n + tail >= text.size()) return false;
    for (std::size_t m = 1; m <= tail; ++m) {
      if ((byteAt(n + m) & 0xC0) != 0x80) return false;
    }
    const unsigned second = tail > 1 ? byteAt(n + 1) : 0;
    if (first == 0xE0 && second < 0xA0) return false;
    if (first == 0xED && second >= 0xA0) return false;
    if (first == 0xF0 && second < 0x90) return false;
    if (first == 0xF4 && second >= 0x90) return false;
    n += tail + 1;
  }
  return true;
}

// Adds a character; U+FFFD in the place of half a pair of surrogates and of what is none.
inline void appendUtf8(std::string& text, std::uint32_t point) {
  if (point > 0x10FFFF || (point >= 0xD800 && point < 0xE000)) point = 0xFFFD;
  const int tail = point < 0x80 ? 0 : point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
  const std::uint32_t lead = tail == 0 ? 0 : 0xFF00U >> (tail + 1) & 0xFFU;
  text += static_cast<char>(lead | point >> 6 * tail);
  for (int n = tail - 1; n >= 0; --n) text += static_cast<char>(0x80 | (point >> 6 * n & 0x3F));
}

}  // namespace tool

#endif
