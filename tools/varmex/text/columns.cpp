#include "tools/varmex/text/columns.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

namespace tool {

namespace {

struct tRange {
  std::uint32_t first;
  std::uint32_t last;
};

// Combining marks, joiners and variation selectors.
constexpr tRange kNarrow[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD},   {0x064B, 0x065F}, {0x1AB0, 0x1AFF},
    {0x1DC0, 0x1DFF}, {0x200B, 0x200D}, {0x20D0, 0x20FF},   {0x3099, 0x309A}, {0xFE00, 0xFE0F},
    {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF},
};

// East Asian wide and full-width forms, and pictographs.
constexpr tRange kWide[] = {
    {0x1100, 0x115F}, {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE4F},   {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD},
};

// What a terminal obeys instead of showing it.
constexpr tRange kSteering[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0x061C, 0x061C},
    {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069},
};

template <std::size_t count>
bool isIn(std::uint32_t point, const tRange (&ranges)[count]) {
  const auto* const range =
      std::lower_bound(std::begin(ranges), std::end(ranges), point,
                       [](const tRange& each, std::uint32_t value) { return each.last < value; });
  return range != std::end(ranges) && range->first <= point;
}

struct tCharacter {
  std::uint32_t point;
  std::size_t size;  // in bytes, 0 where no UTF-8 stands
};

tCharacter takeCharacter(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) return {lead, 1};
  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < size) return {lead, 0};
  std::uint32_t point = lead & (0xFFU >> (size + 1));
  for (std::size_t n = 1; n < size; ++n) {
    const auto byte = static_cast<unsigned char>(text[n]);
    if ((byte & 0xC0) != 0x80) return {lead, 0};
    point = point << 6 | (byte & 0x3F);
  }
  constexpr std::array<std::uint32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = point >= 0xD800 && point <= 0xDFFF;
  if (point < kSmallest[size] || point > 0x10FFFF || isSurrogate) return {lead, 0};
  return {point, size};
}

std::string escaped(std::uint32_t number, const char* mark, int digits) {
  std::string text = mark;
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
    text += "0123456789ABCDEF"[number >> shift & 15];
  }
  return text;
}

std::size_t columnsOf(std::uint32_t point) {
  if (isIn(point, kNarrow)) return 0;
  return isIn(point, kWide) ? 2 : 1;
}

}  // namespace

std::string visible(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const tCharacter character = takeCharacter(text);
    if (character.size == 0) {
      shown += escaped(character.point, "\\x", 2);
    } else if (isIn(character.point, kSteering)) {
      shown += character.point < 0x100 ? escaped(character.point, "\\x", 2)
                                       : escaped(character.point, "\\u", 4);
    } else {
      shown += text.substr(0, character.size);
    }
    text.remove_prefix(std::max<std::size_t>(character.size, 1));
  }
  return shown;
}

std::size_t columnsOf(std::string_view text) {
  std::size_t columns = 0;
  while (!text.empty()) {
    const tCharacter character = takeCharacter(text);
    columns += columnsOf(character.point);
    text.remove_prefix(std::max<std::size_t>(character.size, 1));
  }
  return columns;
}

std::size_t endWithin(std::string_view text, std::size_t columns) {
  std::size_t at = 0;
  while (at < text.size()) {
    const tCharacter character = takeCharacter(text.substr(at));
    const std::size_t wanted = columnsOf(character.point);
    if (wanted > columns) break;
    columns -= wanted;
    at += std::max<std::size_t>(character.size, 1);
  }
  return at;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t columns) {
  std::vector<std::string> lines;
  while (columnsOf(text) > columns) {
    std::size_t end = endWithin(text, columns);
    const std::size_t blank = text.rfind(' ', end);
    if (blank != std::string_view::npos && blank > 0) end = blank;
    if (end == 0) break;  // not even one character fits
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  }
  lines.emplace_back(text);
  return lines;
}

}  // namespace tool
