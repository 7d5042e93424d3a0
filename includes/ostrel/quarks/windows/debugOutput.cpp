#include <windows.h>

#include "ostrel/quarks/trace.h"

namespace varmex::inline nOSTRELS100 {

void writeDebugOutput(const char* text) { OutputDebugStringA(text); }

}  // namespace varmex::inline nOSTRELS100
