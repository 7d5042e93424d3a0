#ifndef TOOLS_VARMEX_CHECK_REFUSALS_H
#define TOOLS_VARMEX_CHECK_REFUSALS_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "varmex/varmex.hpp"

namespace tool {

// What it tells of the occasion.
using tDetails = std::vector<std::pair<const char*, std::string>>;

// What the library says no with. It is made here and not asked for, so that each finding tells what
// it leads to by itself, whatever else is wrong and whether or not a session opens.
struct tRefusedAnswer {
  std::string words;  // as varmex::Error has them
  std::string constant;
  std::int32_t code;  // 0 for an exception that is none of the library's
  tDetails details = {};
  std::string json = {};  // of an answer that was asked for, in the place of the details

  // For people: a sentence, then constant and code.
  std::string told() const;
};

tRefusedAnswer notAvailable(const tDetails& details);
tRefusedAnswer conflict(const tDetails& details);
tRefusedAnswer unknownItem(const tDetails& details);
tRefusedAnswer softwareFault(const tDetails& details);
tRefusedAnswer noTriggerManagerLibrary();
tRefusedAnswer outOfRange();  // not a code but the exception of a destination line 8
tRefusedAnswer answerOf(const varmex::Error& error);

// Of an item that isn't there, and of whatever else the reader of the files says.
tRefusedAnswer itemNotFound(const std::string& section, const std::string& item);
tRefusedAnswer readerRefusal(const std::string& message);

}  // namespace tool

#endif
