#ifndef HALDEN_TOOLS_FILEMODIFICATIONTIME_H
#define HALDEN_TOOLS_FILEMODIFICATIONTIME_H

#include <cstdint>
#include <string>

#include "varmex/status.h"

namespace halden {

// The comparable state of a file.
struct tFileTimeStamp {
  bool exists = false;
  std::uint32_t timeLow = 0;
  std::uint32_t timeHigh = 0;

  bool operator==(const tFileTimeStamp&) const = default;
};

// The last-write time of the file at a UTF-8 path, without opening it. True when the file exists;
// false without a failure when only its folder does. A failure is reported to `status`:
// -52026 when rights are lacking, -52008 for anything else.
bool readLastWriteTime(const std::string& path, std::uint64_t& time, tStatusRecord& status);

}  // namespace halden

#endif
