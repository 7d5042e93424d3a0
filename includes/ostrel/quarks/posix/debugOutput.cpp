#include <cstdio>

#include "ostrel/quarks/trace.h"

namespace varmex::inline nOSTRELS100 {

void writeDebugOutput(const char* text) { std::fputs(text, stderr); }

}  // namespace varmex::inline nOSTRELS100
