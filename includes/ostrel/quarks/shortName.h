#ifndef OSTREL_QUARKS_SHORTNAME_H
#define OSTREL_QUARKS_SHORTNAME_H

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace varmex::inline nOSTRELS100 {

// A name of words and numbers, as in "Chassis1Slot2", in an object that allocates nothing. What
// finds no room is cut off: there is room for two numbers and 35 bytes of words.
class tShortName {
 public:
  static constexpr std::size_t kCapacity = 55;

  tShortName() { endAt(0); }
  explicit tShortName(std::string_view text) : tShortName() { add(text); }
  tShortName(std::string_view word, std::uint32_t number) : tShortName(word) { add(number); }

  tShortName& add(std::string_view text) {
    const std::size_t count = std::min<std::size_t>(text.size(), kCapacity - length_);
    std::copy_n(text.data(), count, text_ + length_);
    return endAt(length_ + count);
  }

  tShortName& add(std::uint32_t number) {
    const auto [end, error] = std::to_chars(text_ + length_, text_ + kCapacity, number);
    return error == std::errc() ? endAt(static_cast<std::size_t>(end - text_)) : *this;
  }

  std::string_view view() const { return {text_, length_}; }
  operator std::string_view() const { return view(); }
  const char* c_str() const { return text_; }

 private:
  tShortName& endAt(std::size_t length) {
    length_ = static_cast<std::uint8_t>(length);
    text_[length] = '\0';
    return *this;
  }

  char text_[kCapacity + 1];
  std::uint8_t length_;
};

}  // namespace varmex::inline nOSTRELS100

#endif
