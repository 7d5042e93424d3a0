#include "tools/varmex/text/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace tool {

bool outputIsTerminal() { return isatty(STDOUT_FILENO) == 1; }

std::optional<std::size_t> terminalColumns() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
  return size.ws_col;
}

}  // namespace tool
