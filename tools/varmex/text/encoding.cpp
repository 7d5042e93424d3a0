#include "tools/varmex/text/encoding.h"

#include <algorithm>

#include "tools/varmex/text/utf8.h"

namespace tool {

namespace {

using namespace std::string_view_literals;

// The longer marks first.
constexpr tWideEncoding kEncodings[] = {{"UTF-32", 4, false, "\xFF\xFE\0\0"sv},
                                        {"UTF-32", 4, true, "\0\0\xFE\xFF"sv},
                                        {"UTF-16", 2, false, "\xFF\xFE"sv},
                                        {"UTF-16", 2, true, "\xFE\xFF"sv}};

// Of plain text every other byte is a NUL.
bool isWide(std::string_view bytes) {
  const auto zeros = std::count(bytes.begin(), bytes.end(), '\0');
  return bytes.size() >= 8 && static_cast<std::size_t>(zeros) > bytes.size() / 3;
}

std::uint32_t unitAt(std::string_view bytes, const tWideEncoding& encoding, std::size_t at) {
  std::uint32_t unit = 0;
  for (std::size_t n = 0; n < encoding.width; ++n) {
    const std::size_t byte = encoding.isBigEndian ? n : encoding.width - 1 - n;
    unit = unit << 8 | static_cast<unsigned char>(bytes[at + byte]);
  }
  return unit;
}

}  // namespace

std::optional<tWideEncoding> wideEncodingOf(std::string_view bytes) {
  for (const tWideEncoding& encoding : kEncodings) {
    if (bytes.starts_with(encoding.mark)) return encoding;
  }
  if (!isWide(bytes)) return std::nullopt;
  return tWideEncoding{"UTF-16", 2, bytes.front() == '\0', ""};
}

std::string narrowed(std::string_view bytes, const tWideEncoding& encoding) {
  const std::string_view rest = bytes.substr(encoding.mark.size());
  if (!isWide(rest)) return std::string(rest);
  std::string text;
  for (std::size_t at = 0; at + encoding.width <= rest.size(); at += encoding.width) {
    std::uint32_t point = unitAt(rest, encoding, at);
    const std::size_t next = at + encoding.width;
    const bool isHigh = point >= 0xD800 && point < 0xDC00 && next + encoding.width <= rest.size();
    const std::uint32_t low = isHigh ? unitAt(rest, encoding, next) : 0;
    if (low >= 0xDC00 && low < 0xE000) {
      point = 0x10000 + ((point & 0x3FF) << 10) + (low & 0x3FF);
      at = next;
    }
    appendUtf8(text, point);
  }
  return text;
}

}  // namespace tool
