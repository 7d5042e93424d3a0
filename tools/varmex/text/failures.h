#ifndef TOOLS_VARMEX_TEXT_FAILURES_H
#define TOOLS_VARMEX_TEXT_FAILURES_H

#include <exception>
#include <optional>
#include <stdexcept>
#include <string>

#include "tools/varmex/text/itemPlaces.h"
#include "varmex/varmex.hpp"

namespace tool {

// What a person is told, on the standard error output, of a failure that ends a command, and of
// what went wrong on the way without ending it. All sentences about failures are made here.
void tellFailure(const std::exception& failure);
void tellWarning(const varmex::Error& warning);

// Neither file of the description is there.
class tNoDescription : public std::runtime_error {
 public:
  tNoDescription();

  static const char* remedy();
};

bool isDescriptionThere();

// Throws tNoDescription without one: where nothing was found, since there is nothing.
void requireDescription();

// Why there is nothing to show of what is named, "chassis", in lines of its own.
std::string noneText(const std::string& what);

// What happened, as a sentence for people, by the library's words alone.
std::string sentenceFor(const varmex::Error& error);

// The item of the description that is at fault, as far as these words tell it.
std::optional<tFaultyItem> faultyItemOf(const varmex::Error& error);

// In the place of a constant, for what is none of the library's.
inline constexpr const char* kNoConstant = "std::exception";

// What of the description was asked, as far as that is known; the library's words do not always
// tell.
struct tAsked {
  std::optional<std::uint32_t> chassis = std::nullopt;
  std::optional<std::uint32_t> slot = std::nullopt;
  std::optional<std::uint32_t> bridge = std::nullopt;
  std::optional<std::uint32_t> line = std::nullopt;  // of the bridge
};

// The same with file, line and text of the item that is at fault, and what to do about it.
struct tToldFailure {
  std::string sentence;
  std::string remedy;
};
tToldFailure toldFailure(const varmex::Error& error, const tAsked& asked = {});

// Of the one exception that is none of the library's own.
inline constexpr const char* kLine8Sentence =
    "The line map names the destination line 8, and lines are 0 to 7.";
tToldFailure toldLine8(const tAsked& asked);

// One failure in a line: such a sentence, then its constant and code if the library has one.
std::string failureText(const std::string& constant, std::int32_t code,
                        const std::string& sentence);

}  // namespace tool

#endif
