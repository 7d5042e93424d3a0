#ifndef CORPXITOOLS_FILESYSTEM_POSIX_REGISTRYNAMES_H
#define CORPXITOOLS_FILESYSTEM_POSIX_REGISTRYNAMES_H

#include <algorithm>
#include <compare>
#include <cstring>
#include <string_view>

namespace varmex::inline nCORPXITOOLS000 {

// Names of keys and values compare without regard to the case of ASCII letters.

constexpr char lowerCase(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}

// How many bytes two texts have in common ahead of the first that differs.
inline std::size_t commonBytes(std::string_view a, std::string_view b) {
  const std::size_t size = std::min(a.size(), b.size());
  std::size_t n = 0;
  while (n + 8 <= size && std::memcmp(a.data() + n, b.data() + n, 8) == 0) n += 8;
  while (n < size && a[n] == b[n]) ++n;
  return n;
}

// The order of names and of paths: a path comes directly ahead of those below it.
inline std::strong_ordering compareRegistryNames(std::string_view a, std::string_view b) {
  const auto rank = [](char byte) {
    return byte == '\\' ? -1 : static_cast<unsigned char>(lowerCase(byte));
  };
  const std::size_t common = commonBytes(a, b);
  return std::lexicographical_compare_three_way(
      a.begin() + common, a.end(), b.begin() + common, b.end(),
      [rank](char x, char y) { return rank(x) <=> rank(y); });
}

inline bool sameRegistryName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && compareRegistryNames(a, b) == 0;
}

inline bool isBelow(std::string_view path, std::string_view ancestor) {
  return path.size() > ancestor.size() && path[ancestor.size()] == '\\' &&
         sameRegistryName(path.substr(0, ancestor.size()), ancestor);
}

}  // namespace varmex::inline nCORPXITOOLS000

#endif
