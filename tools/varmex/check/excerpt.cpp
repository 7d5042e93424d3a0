#include "tools/varmex/check/excerpt.h"

#include <algorithm>
#include <string>

#include "corpxiTools/iniLine.h"
#include "varmex/varmex.hpp"

namespace tool {

namespace {

constexpr std::size_t kWidest = 100;

// Each character in one column, by its first byte; the bytes of no character are told apart by
// those behind them.
std::u32string columns(std::string_view line) {
  std::u32string text;
  for (std::size_t n = 0; n < line.size();) {
    const auto byte = static_cast<unsigned char>(line[n++]);
    std::size_t tail = byte >= 0xC2 && byte < 0xE0 ? 1 : byte >= 0xE0 && byte < 0xF0 ? 2 : 0;
    if (byte >= 0xF0 && byte < 0xF5) tail = 3;
    char32_t point = tail ? byte & (0x3FU >> tail) : byte;
    for (; tail > 0 && n < line.size(); --tail, ++n) {
      const auto next = static_cast<unsigned char>(line[n]);
      if ((next & 0xC0) != 0x80) break;
      point = point << 6 | (next & 0x3F);
    }
    if (byte == '\t') point = ' ';
    const bool isShown = tail == 0 && point >= ' ' && (point < 0x7F || point >= 0xA0) &&
                         (byte < 0x80 || byte >= 0xC2);
    text += isShown ? point : U'?';
  }
  return text;
}

std::string utf8(std::u32string_view text) {
  std::string bytes;
  for (const char32_t point : text) {
    varmex::detail::appendUtf8(bytes, point);
  }
  return bytes;
}

std::size_t width(const char* begin, const char* end) {
  return columns({begin, static_cast<std::size_t>(end - begin)}).size();
}

}  // namespace

std::string showExcerpt(std::uint32_t number, std::string_view line) {
  std::string bytes(line);
  char* const begin = bytes.data();
  char* const end = begin + bytes.size();
  char* const equals = std::find(begin, end, '=');
  const varmex::tIniLineContent content =
      varmex::parseIniLine({begin, end, equals == end ? nullptr : equals});
  char* const first = varmex::skipIniSpace(begin, end);
  if (first == end) return {};
  std::string mark(width(begin, first), ' ');
  if (content.kind == varmex::tIniLineKind::item) {
    mark += std::string(width(content.name, content.nameEnd), '~');
    mark += std::string(width(content.nameEnd, content.value), ' ');
    mark += '^' + std::string(width(content.value, content.valueEnd) - 1, '~');
  } else if (content.kind == varmex::tIniLineKind::header) {
    mark += std::string(width(first, content.name), ' ');
    mark += '^' + std::string(width(content.name, content.nameEnd) - 1, '~');
  } else {
    mark += '^' + std::string(width(first, varmex::trimIniEnd(first, end)) - 1, '~');
  }
  std::u32string text = columns(line);
  if (text.size() > kWidest) text = text.substr(0, kWidest) + U"...";
  if (mark.size() > kWidest) mark.resize(kWidest);
  const std::string label = std::to_string(number);
  return "  " + label + " | " + utf8(text) + '\n' + std::string(label.size() + 2, ' ') + " | " +
         mark + '\n';
}

}  // namespace tool
