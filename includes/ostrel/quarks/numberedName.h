#ifndef OSTREL_QUARKS_NUMBEREDNAME_H
#define OSTREL_QUARKS_NUMBEREDNAME_H

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "ostrel/quarks/nameBytes.h"

namespace varmex::inline nOSTRELS100 {

// The name of one of several things, as in "Chassis1" "Slot" 2: words ahead and a plain decimal
// number. It is compared piece by piece and need not be written out for that: bytes that were
// written just now can't be read as words of eight without waiting for them.
class tNumberedName {
 public:
  // Refers to the words, which must outlive it.
  tNumberedName(std::string_view head, std::string_view word, std::uint32_t number)
      : head_(head), word_(word), number_(number) {
    size_ = head.size() + word.size() + 1;
    for (std::uint32_t left = number; left > 9; left /= 10) ++size_;
  }

  std::size_t size() const { return size_; }

  // Into a buffer of that size at least.
  void writeTo(char* buffer) const {
    buffer = std::copy(head_.begin(), head_.end(), buffer);
    buffer = std::copy(word_.begin(), word_.end(), buffer);
    std::to_chars(buffer, buffer + size_ - head_.size() - word_.size(), number_);
  }

  std::string text() const {
    std::string text(size_, '\0');
    writeTo(text.data());
    return text;
  }

  // Whether a name is this one.
  bool is(std::string_view name) const {
    if (name.size() != size_) return false;
    const char* position = name.data() + size_;
    std::uint32_t left = number_;
    do {
      if (*--position != static_cast<char>('0' + left % 10)) return false;
      left /= 10;
    } while (left > 0);
    return isSameName({name.data() + head_.size(), word_.size()}, word_) &&
           isSameName({name.data(), head_.size()}, head_);
  }

 private:
  std::string_view head_;
  std::string_view word_;
  std::uint32_t number_;
  std::size_t size_;
};

}  // namespace varmex::inline nOSTRELS100

#endif
