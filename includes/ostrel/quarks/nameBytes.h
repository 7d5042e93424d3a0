#ifndef OSTREL_QUARKS_NAMEBYTES_H
#define OSTREL_QUARKS_NAMEBYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace varmex::inline nOSTRELS100 {

// Names in words of eight bytes: most are so short that a call costs more than they do.

template <class Word>
std::uint64_t loadBytes(const char* position) {
  Word word;
  std::memcpy(&word, position, sizeof word);
  return word;
}

// All bytes of a text of up to eight.
inline std::uint64_t loadShort(const char* text, std::size_t length) {
  if (length >= 4) {
    return loadBytes<std::uint32_t>(text) | loadBytes<std::uint32_t>(text + length - 4) << 32;
  }
  if (length == 0) return 0;
  const auto byte = [text](std::size_t n) {
    return std::uint64_t{static_cast<unsigned char>(text[n])};
  };
  return byte(0) | byte(length / 2) << 8 | byte(length - 1) << 16;
}

inline bool isSameName(std::string_view a, std::string_view b) {
  const std::size_t size = a.size();
  if (size != b.size()) return false;
  const char* one = a.data();
  const char* other = b.data();
  if (size <= 8) return loadShort(one, size) == loadShort(other, size);
  const char* const last = one + size - 8;
  for (; one < last; one += 8, other += 8) {
    if (loadBytes<std::uint64_t>(one) != loadBytes<std::uint64_t>(other)) return false;
  }
  return loadBytes<std::uint64_t>(last) == loadBytes<std::uint64_t>(b.data() + size - 8);
}

}  // namespace varmex::inline nOSTRELS100

#endif
