#ifndef TOOLS_VARMEX_DESCRIBE_LINES_H
#define TOOLS_VARMEX_DESCRIBE_LINES_H

#include <cstdint>
#include <string>

namespace tool {

// "0,3-5" for the bits of a line mask.
std::string linesOf(std::uint32_t mask);

}  // namespace tool

#endif
