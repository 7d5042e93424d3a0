#ifndef TOOLS_VARMEX_TEXT_ENCODING_H
#define TOOLS_VARMEX_TEXT_ENCODING_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

// An encoding of a description file that the library does not read.
struct tWideEncoding {
  const char* name;
  std::size_t width;  // of a unit, in bytes
  bool isBigEndian;
  std::string_view mark;
};

// By the mark that the bytes begin with, and without one by their look: nothing for bytes and
// UTF-8.
std::optional<tWideEncoding> wideEncodingOf(std::string_view bytes);

// The text in UTF-8, as it is once somebody has saved it so. What has the mark alone and is bytes
// otherwise stays as it is behind the mark.
std::string narrowed(std::string_view bytes, const tWideEncoding& encoding);

}  // namespace tool

#endif
