#ifndef OSTREL_QUARKS_FIXEDSTATUS_H
#define OSTREL_QUARKS_FIXEDSTATUS_H

#include <cstddef>
#include <cstdint>

#include "varmex/status.h"

namespace varmex::inline nOSTRELS100 {

inline constexpr std::uint32_t kFixedStatusSize = 208;

// The status record of the platform layer and of the service library: a layout shared with the
// latter. A record that declares less than kFixedStatusSize carries only `code`.
struct tFixedStatus {
  std::uint32_t size = kFixedStatusSize;
  std::int32_t code = 0;
  char component[10] = {};
  char file[101] = {};
  std::uint32_t line = 0;
  std::uint64_t extra = 0;  // always 0, never read
  char padding[72] = {};    // up to the declared size, which is what others may write to
};
static_assert(sizeof(tFixedStatus) == kFixedStatusSize);

// Sets a code and its source under the merge rule. A file name of more than 100 characters keeps
// its first 49 and last 49 around two dots.
void fixedStatusSet(tFixedStatus& fixed, std::int32_t code, const char* component, const char* file,
                    std::uint32_t line);

// Turns a fixed record into a status record under the merge rule; false when its text found no
// room.
bool statusFromFixed(const tFixedStatus& fixed, tStatusRecord& record);

}  // namespace varmex::inline nOSTRELS100

#endif
