#ifndef OSTREL_QUARKS_LITERAL_H
#define OSTREL_QUARKS_LITERAL_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace varmex::inline nOSTRELS100 {

// A text that stands in the source: it outlives whatever refers to it, its length is known, and as
// a part of JSON it needs no escapes. Another text does not compile.
class tLiteral {
 public:
  // To be assigned to.
  tLiteral() = default;

  template <std::size_t Size>
  consteval tLiteral(const char (&text)[Size]) : text_(text), length_(Size - 1) {
    for (const char byte : std::string_view(text, Size - 1)) {
      if (byte < ' ' || byte > '~' || byte == '"' || byte == '\\') throw "needs escapes";
    }
  }

  constexpr const char* c_str() const { return text_; }
  constexpr std::string_view view() const { return {text_, length_}; }
  constexpr operator std::string_view() const { return view(); }

 private:
  const char* text_;
  std::uint32_t length_;
};

}  // namespace varmex::inline nOSTRELS100

#endif
