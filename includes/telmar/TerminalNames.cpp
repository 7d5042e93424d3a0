#include "telmar/TerminalNames.h"

#include <algorithm>

namespace telmar {

void TerminalNames::add(const std::string& name) {
  const auto row = static_cast<std::uint32_t>(names_.size());
  names_.push_back(name);
  for (const char byte : name) {
    std::uint32_t& first = firstWith_[static_cast<unsigned char>(byte)];
    first = std::min(first, row);
  }
}

}  // namespace telmar
