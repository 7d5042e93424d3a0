#ifndef OSTREL_QUARKS_TRACE_H
#define OSTREL_QUARKS_TRACE_H

#include <cstdarg>

namespace varmex::inline nOSTRELS100 {

// Hands a text to whoever listens to the process's debug output.
void writeDebugOutput(const char* text);

class iTraceDestination {
 public:
  virtual ~iTraceDestination() = default;
  virtual void write(const char* format, std::va_list arguments) = 0;
};

// Formats into 512 bytes, cutting what is longer, and writes to the debug output.
class tConsoleTraceDestination : public iTraceDestination {
 public:
  void write(const char* format, std::va_list arguments) override;
};

// Debug text for the developer at hand; the library itself makes no trace calls.
class tTrace {
 public:
  explicit tTrace(iTraceDestination& destination) : destination_(destination) {}
  void operator()(const char* format, ...);

 private:
  iTraceDestination& destination_;
};

}  // namespace varmex::inline nOSTRELS100

#endif
