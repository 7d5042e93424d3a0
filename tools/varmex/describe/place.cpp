#include "tools/varmex/describe/place.h"

#include <CLI/CLI.hpp>
#include <charconv>

namespace tool {

namespace {

std::uint32_t parseNumber(const std::string& text, const std::string& place) {
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) {
    throw CLI::ValidationError("CHASSIS[/SLOT]", '"' + place + "\" is neither 2 nor 2/5 or such");
  }
  return number;
}

}  // namespace

tPlace parsePlace(const std::string& text) {
  if (text.empty()) return {};
  const std::size_t slash = text.find('/');
  const std::uint32_t chassis = parseNumber(text.substr(0, slash), text);
  if (slash == std::string::npos) return {chassis, std::nullopt};
  return {chassis, parseNumber(text.substr(slash + 1), text)};
}

}  // namespace tool
