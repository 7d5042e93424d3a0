#ifndef TOOLS_VARMEX_TEXT_MOMENT_H
#define TOOLS_VARMEX_TEXT_MOMENT_H

#include <string>

namespace tool {

// "2026-11-21T14:31:07Z": now, or the seconds since 1970 that SOURCE_DATE_EPOCH names, which makes
// output the same each time.
std::string momentInUtc();

// The same for people: "2026-11-21 14:31:07 UTC". Any other text stays as it is.
std::string momentForPeople(const std::string& moment);

}  // namespace tool

#endif
