#include "tools/varmex/text/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace tool {

bool outputIsTerminal() { return isatty(STDOUT_FILENO) == 1; }

bool outputTakesColours() {
  const char* const kind = std::getenv("TERM");
  return outputIsTerminal() && !(kind && std::strcmp(kind, "dumb") == 0);
}

std::optional<std::size_t> terminalColumns() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
  return size.ws_col;
}

}  // namespace tool
