#ifndef TOOLS_VARMEX_CHECK_EXCERPT_H
#define TOOLS_VARMEX_CHECK_EXCERPT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

// A line of a file with its number and a mark below: under the section's name of a header, under
// name and value of an item, else under all of it. Lines of text, each with its end; nothing for an
// empty line. What a terminal would not show is made visible, and a line that is wider than the
// output ends with dots.
std::string showExcerpt(std::uint32_t number, std::string_view line);

}  // namespace tool

#endif
