#ifndef HALDEN_TOOLS_NATIVEMODIFICATIONTIME_H
#define HALDEN_TOOLS_NATIVEMODIFICATIONTIME_H

#include <cstdint>

#include "varmex/status.h"

namespace halden {

enum class tTimeAnswer {
  found,
  notFound,  // the file is not there, its folder is
  denied,
  failed,
};

// The last-write time of a file, whose path is UTF-8, as the system counts it. What is denied or
// fails leaves its reason with the system, or in `status` when the question could not be put at
// all.
tTimeAnswer queryLastWriteTime(const char* path, std::uint64_t& time, tStatusRecord& status);

}  // namespace halden

#endif
