#include "ostrel/quarks/systemError.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace varmex::inline nOSTRELS100 {

tSystemError describeSystemError(std::uint32_t code) {
  tSystemError error{"posix", code, {}};
  if (const char* text = strerrordesc_np(static_cast<int>(code))) {
    std::snprintf(error.text, sizeof error.text, "%s", text);
  }
  return error;
}

tSystemError lastSystemError() { return describeSystemError(static_cast<std::uint32_t>(errno)); }

}  // namespace varmex::inline nOSTRELS100
