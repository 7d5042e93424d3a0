#include "ostrel/quarks/trace.h"

#include <cstdio>

namespace varmex::inline nOSTRELS100 {

void tConsoleTraceDestination::write(const char* format, std::va_list arguments) {
  char text[512];
  std::vsnprintf(text, sizeof text, format, arguments);
  writeDebugOutput(text);
}

void tTrace::operator()(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  destination_.write(format, arguments);
  va_end(arguments);
}

}  // namespace varmex::inline nOSTRELS100
