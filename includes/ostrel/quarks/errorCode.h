#ifndef OSTREL_QUARKS_ERRORCODE_H
#define OSTREL_QUARKS_ERRORCODE_H

#include <cstdint>

namespace varmex::inline nOSTRELS100 {

// A status code with its "error_constant".
struct tErrorCode {
  std::int32_t value;
  const char* constant;
};

}  // namespace varmex::inline nOSTRELS100

#endif
