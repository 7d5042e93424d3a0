#ifndef TELMAR_TERMINALNAMES_H
#define TELMAR_TERMINALNAMES_H

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace telmar {

// The names of a device's terminals, in the order of its table. A name is looked up as far as it
// goes, so that "PXI_Trig" finds "PXI_Trig0"; coordinators abbreviate.
class TerminalNames {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  TerminalNames() { firstWith_.fill(kNone); }

  // Of bytes that stand in a JSON string as they are.
  void add(const std::string& name);

  // The first terminal whose name begins with `name`, or kNone.
  std::uint32_t find(std::string_view name) const {
    std::uint32_t row = name.empty() ? 0 : firstWith_[static_cast<unsigned char>(name.back())];
    for (; row < names_.size(); ++row) {
      if (names_[row].size() >= name.size() && isSame(names_[row].data(), name)) return row;
    }
    return kNone;
  }

 private:
  static std::uint64_t wordAt(const char* text) {
    std::uint64_t word;
    std::memcpy(&word, text, sizeof word);
    return word;
  }

  // Names of 8 to 16 bytes, which is nearly all, are compared as two words that may overlap.
  static bool isSame(const char* own, std::string_view name) {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    const std::size_t size = name.size();
    if (size < kWord || size > 2 * kWord) return std::memcmp(own, name.data(), size) == 0;
    return wordAt(own) == wordAt(name.data()) &&
           wordAt(own + size - kWord) == wordAt(name.data() + size - kWord);
  }

  std::vector<std::string> names_;
  // Of each byte the first name that has it: none ahead of that one begins with a text that ends in
  // this byte.
  std::array<std::uint32_t, 256> firstWith_;
};

}  // namespace telmar

#endif
