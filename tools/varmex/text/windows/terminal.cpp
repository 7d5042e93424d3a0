#include "tools/varmex/text/terminal.h"

#include <windows.h>

namespace tool {

namespace {

// Nothing for what is no console.
std::optional<DWORD> consoleMode() {
  DWORD mode = 0;
  if (!GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode)) return std::nullopt;
  return mode;
}

}  // namespace

bool outputIsTerminal() { return consoleMode().has_value(); }

// Older consoles refuse the mode that text/streams.h asks for.
bool outputTakesColours() {
  return (consoleMode().value_or(0) & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

std::optional<std::size_t> terminalColumns() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) return std::nullopt;
  return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

}  // namespace tool
