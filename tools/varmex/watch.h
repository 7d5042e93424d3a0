#ifndef TOOLS_VARMEX_WATCH_H
#define TOOLS_VARMEX_WATCH_H

#include <cstdint>
#include <optional>
#include <ostream>

#include "tools/varmex/tree.h"

namespace tool {

// What came, went or changed between two descriptions of a session: one line each, for chassis and
// for the modules in their slots.
std::vector<std::string> compareSessions(const tJson& before, const tJson& after);

struct tWatchOptions {
  bool once;
  std::optional<std::uint32_t> timeoutMs;  // for the whole watch
};

// Waits for changes of the description and tells of them, until the time is over or, if asked,
// after the first. A description that cannot be opened is reported and waited out. False when the
// time ran out without a change.
bool watch(const tWatchOptions& options, std::ostream& out, std::ostream& faults);

}  // namespace tool

#endif
