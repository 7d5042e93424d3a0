#ifndef TOOLS_VARMEX_TEXT_TERMINAL_H
#define TOOLS_VARMEX_TEXT_TERMINAL_H

#include <cstddef>
#include <optional>
#include <string>

namespace tool {

// What the standard output is. A pair: one source for each platform.
bool outputIsTerminal();
bool outputTakesColours();
std::optional<std::size_t> terminalColumns();  // as the system tells, if it does

// How wide a table may be: COLUMNS where the environment has it, else the terminal's width; nothing
// for a file or a pipe, which takes any width.
std::optional<std::size_t> outputColumns();

enum class tColour { heading, good, bad };

// The text in a colour on a terminal that takes it, as it stands elsewhere or where the environment
// has NO_COLOR.
std::string coloured(const std::string& text, tColour colour);

}  // namespace tool

#endif
