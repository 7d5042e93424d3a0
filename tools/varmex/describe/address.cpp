#include "tools/varmex/describe/address.h"

#include <charconv>
#include <cstdio>
#include <string_view>

namespace tool {

namespace {

[[noreturn]] void refuse(const std::string& text) {
  throw CLI::ValidationError("PCI address", '"' + text +
                                                "\" is neither BUS.DEVICE.FUNCTION in decimal, "
                                                "such as 33.15.0, nor BUS:DEVICE.FUNCTION in "
                                                "hexadecimal, such as 21:0f.0");
}

// Takes a number and the mark behind it off the front of `rest`; the last number has none.
bool takeNumber(std::string_view& rest, char mark, int base, std::uint32_t& number) {
  const std::size_t length = mark ? rest.find(mark) : rest.size();
  if (length == std::string_view::npos || length == 0) return false;
  const char* const end = rest.data() + length;
  const auto [stop, error] = std::from_chars(rest.data(), end, number, base);
  if (error != std::errc() || stop != end) return false;
  rest.remove_prefix(length + (mark ? 1 : 0));
  return true;
}

}  // namespace

tPciAddress parseAddress(const std::string& text) {
  std::string_view rest = text;
  const std::size_t colon = rest.rfind(':');
  const bool isHexadecimal = colon != std::string_view::npos;
  const int base = isHexadecimal ? 16 : 10;
  std::uint32_t domain = 0;
  const bool hasDomain = isHexadecimal && rest.find(':') != colon;
  if (hasDomain && !takeNumber(rest, ':', base, domain)) refuse(text);
  tPciAddress address;
  const bool isRead = takeNumber(rest, isHexadecimal ? ':' : '.', base, address.bus) &&
                      takeNumber(rest, '.', base, address.device) &&
                      takeNumber(rest, '\0', base, address.function);
  if (!isRead) refuse(text);
  if (domain != 0) {
    throw CLI::ValidationError("PCI address", '"' + text +
                                                  "\" is in another PCI domain than 0000, the only "
                                                  "one of descriptions");
  }
  return address;
}

std::optional<tPciAddress> addressIn(const std::string& text) {
  try {
    return parseAddress(text);
  } catch (const CLI::ValidationError&) {
    return std::nullopt;
  }
}

std::string textOf(const tPciAddress& address, tPciNotation notation) {
  char text[40];
  const char* const form = notation == tPciNotation::decimal ? "%u.%u.%u" : "%02x:%02x.%x";
  std::snprintf(text, sizeof text, form, address.bus, address.device, address.function);
  return text;
}

const char* titleOf(tPciNotation notation) {
  return notation == tPciNotation::decimal ? "PCI (dec)" : "PCI (hex)";
}

void addPciOption(CLI::App& line, tPciNotation& notation) {
  const auto take = [&notation](const std::string& name) {
    if (name != "dec" && name != "hex") {
      throw CLI::ValidationError("--pci", "\"" + name + "\" is neither dec nor hex");
    }
    notation = name == "hex" ? tPciNotation::hexadecimal : tPciNotation::decimal;
  };
  line.add_option_function<std::string>(
          "--pci", take, "How PCI addresses are written: dec (33.15.0) or hex (21:0f.0, as lspci)")
      ->type_name("dec|hex");
}

}  // namespace tool
