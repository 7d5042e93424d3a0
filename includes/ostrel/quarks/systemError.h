#ifndef OSTREL_QUARKS_SYSTEMERROR_H
#define OSTREL_QUARKS_SYSTEMERROR_H

#include <cstdint>

namespace varmex::inline nOSTRELS100 {

// An error number of the operating system with the system's own text. Nothing is allocated.
struct tSystemError {
  const char* api;  // whose numbers these are
  std::uint32_t code;
  char text[512];  // empty when the system gave none
};

tSystemError describeSystemError(std::uint32_t code);

// The error that the calling thread's last failed system call left.
tSystemError lastSystemError();

}  // namespace varmex::inline nOSTRELS100

#endif
