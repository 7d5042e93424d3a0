#ifndef TOOLS_VARMEX_TEXT_UTF8_H
#define TOOLS_VARMEX_TEXT_UTF8_H

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

}  // namespace tool

#endif
