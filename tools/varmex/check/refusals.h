#ifndef TOOLS_VARMEX_CHECK_REFUSALS_H
#define TOOLS_VARMEX_CHECK_REFUSALS_H

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>

namespace tool {

// The library's words for what it refuses, as varmex::Error has them. They are made here and not
// asked for, so that each finding tells what it leads to by itself, whatever else is wrong and
// whether or not a session opens.

using tDetails = std::initializer_list<std::pair<const char*, std::string>>;

std::string notAvailable(tDetails details);
std::string conflict(tDetails details);
std::string unknownItem(tDetails details);
std::string softwareFault(tDetails details);
std::string noTriggerManagerLibrary();
std::string outOfRange();  // not a code but the exception of a destination line 8

// Of an item that isn't there, and of whatever else the reader of the files says.
std::string itemNotFound(const std::string& section, const std::string& item);
std::string readerRefusal(const std::string& message);

}  // namespace tool

#endif
