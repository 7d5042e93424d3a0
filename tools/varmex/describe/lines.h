#ifndef TOOLS_VARMEX_DESCRIBE_LINES_H
#define TOOLS_VARMEX_DESCRIBE_LINES_H

#include <cstdint>
#include <string>

#include "tools/varmex/describe/json.h"
#include "varmex/triggers.hpp"

namespace tool {

// "0,3-5" for the bits of a line mask.
std::string linesOf(std::uint32_t mask);

// The lines of a bridge as `describe` gives it. One that can't be read leads nowhere.
varmex::LineMap lineMasksOf(const tJson& bridge);

// "lines 0-5 each to the same, 6 to 6-7"; "no lines" where none comes out anywhere.
std::string lineWordsOf(const varmex::LineMap& lines);

// All of a bridge, with the marks of what can't be read:
// "from bus 1 to bus !2: lines 0-6 each to the same, 7: !3".
std::string bridgeWordsOf(const tJson& bridge);

}  // namespace tool

#endif
