#ifndef OSTREL_QUARKS_SOURCEPOSITION_H
#define OSTREL_QUARKS_SOURCEPOSITION_H

#include <cstdint>

namespace varmex::inline nOSTRELS100 {

// Where a failure was raised. The texts are literals.
struct tSourcePosition {
  const char* file;
  std::uint32_t line;
  const char* component;  // null: not written
};

inline constexpr const char* kComponentName = "varmex";

}  // namespace varmex::inline nOSTRELS100

// The position of the line that holds it.
#define OSTREL_HERE (::varmex::tSourcePosition{__FILE__, __LINE__, ::varmex::kComponentName})

#endif
