#ifndef TOOLS_VARMEX_TEXT_COLUMNS_H
#define TOOLS_VARMEX_TEXT_COLUMNS_H

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// How texts of a description, which may hold anything, look on a terminal.

// The same text with what would steer a terminal made visible: control characters and those that
// turn the direction of writing as "\x1B" or "\u202E", bytes that are no UTF-8 as "\xFF".
std::string visible(std::string_view text);

// Columns that a terminal needs for a visible text: none for combining marks, two for wide
// characters.
std::size_t columnsOf(std::string_view text);

// Where the longest beginning of a visible text ends that needs at most so many columns.
std::size_t endWithin(std::string_view text, std::size_t columns);

// A visible text in lines of at most that many columns, broken at blanks where there are any.
std::vector<std::string> wrapped(std::string_view text, std::size_t columns);

}  // namespace tool

#endif
