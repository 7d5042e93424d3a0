#ifndef TOOLS_VARMEX_TEXT_OUTPUT_H
#define TOOLS_VARMEX_TEXT_OUTPUT_H

#include <string>

#include "tools/varmex/describe/json.h"

namespace tool {

// For a program, on the standard output.
void printJson(const tJson& json);
void printJsonLine(const tJson& json);  // in one line

// A whole text into a file (tReplacement), or to the standard output for "-". Throws
// std::runtime_error when it can't be written; a file that was there is then as it was.
void save(const std::string& text, const std::string& path);

}  // namespace tool

#endif
