#include "halden/tools/widePath.h"

#include <cstdint>
#include <new>

#include "ostrel/quarks/failure.h"

namespace halden {

namespace {

using namespace varmex;

struct tLead {
  unsigned char mask;
  unsigned char pattern;
  int following;
};

constexpr tLead kLeads[] = {{0xE0, 0xC0, 1}, {0xF0, 0xE0, 2}, {0xF8, 0xF0, 3}};

// Takes one code point off the front. A character that the end of the path cuts short ends with it.
std::uint32_t takeCodePoint(const char*& path) {
  const auto first = static_cast<unsigned char>(*path++);
  for (const tLead& lead : kLeads) {
    if ((first & lead.mask) != lead.pattern) continue;
    std::uint32_t point = first & static_cast<unsigned char>(~lead.mask);
    for (int n = 0; n < lead.following; ++n) {
      point = point << 6 | (static_cast<unsigned char>(*path) & 0x3F);
      if (*path) ++path;
    }
    return point;
  }
  return first;
}

}  // namespace

bool widenPath(const char* path, std::u16string& wide, tStatusRecord& status) {
  if (isFailure(status)) return false;
  try {
    std::u16string units;
    while (*path) {
      const std::uint32_t point = takeCodePoint(path);
      if (point < 0x10000) {
        units += static_cast<char16_t>(point);
      } else {
        units += static_cast<char16_t>((point >> 10) + 0xD7C0);
        units += static_cast<char16_t>((point & 0x3FF) + 0xDC00);
      }
    }
    wide = std::move(units);
    return true;
  } catch (const std::bad_alloc&) {
    tFailure(kOstrelMemoryFull, {"ribesk/err/Allocator", __LINE__, kComponentName})
        .reportTo(status);
    return false;
  }
}

}  // namespace halden
