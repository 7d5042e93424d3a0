#include "tools/varmex/text/terminal.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

namespace tool {

namespace {

bool takesColours() {
  static const bool takes = [] {
    const char* const refusal = std::getenv("NO_COLOR");
    return outputTakesColours() && !(refusal && *refusal);
  }();
  return takes;
}

}  // namespace

std::optional<std::size_t> outputColumns() {
  if (const char* const text = std::getenv("COLUMNS")) {
    std::size_t columns = 0;
    const char* const end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, columns);
    if (error == std::errc() && stop == end && columns > 0) return columns;
  }
  return outputIsTerminal() ? terminalColumns() : std::nullopt;
}

std::string coloured(const std::string& text, tColour colour) {
  if (!takesColours() || text.empty()) return text;
  const char* const start = colour == tColour::heading ? "\x1B[1m"
                            : colour == tColour::good  ? "\x1B[32m"
                                                       : "\x1B[31m";
  return start + text + "\x1B[0m";
}

}  // namespace tool
