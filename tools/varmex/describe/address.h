#ifndef TOOLS_VARMEX_DESCRIBE_ADDRESS_H
#define TOOLS_VARMEX_DESCRIBE_ADDRESS_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>

namespace tool {

// A PCI address in one of its two notations. With dots its numbers are decimal, as the library has
// them ("33.15.0"); with a colon they are hexadecimal, as lspci writes them ("21:0f.0").
struct tPciAddress {
  std::uint32_t bus = 0;
  std::uint32_t device = 0;
  std::uint32_t function = 0;

  bool operator==(const tPciAddress& other) const = default;
};

enum class tPciNotation { decimal, hexadecimal };

// Reads either notation, the hexadecimal one with domain 0000 in front or not: descriptions know no
// other. Throws CLI::ValidationError for any other text.
tPciAddress parseAddress(const std::string& text);

// The same of a text that may be something else.
std::optional<tPciAddress> addressIn(const std::string& text);

std::string textOf(const tPciAddress& address, tPciNotation notation);

// What stands above or ahead of addresses in that notation.
const char* titleOf(tPciNotation notation);

// The option that chooses the notation of a command's output.
void addPciOption(CLI::App& line, tPciNotation& notation);

}  // namespace tool

#endif
