#include "tools/varmex/saved/temporaryRoot.h"

#include <stdexcept>

namespace tool {

// The library asks the system for its folders and its registry, which are the machine's own.

namespace {

[[noreturn]] void refuse() {
  throw std::runtime_error("no other root than this machine's can be read on Windows");
}

}  // namespace

bool canChangeRoot() { return false; }

std::string fillTemporaryRoot(const std::vector<tFileContent>&) { refuse(); }

void emptyTemporaryRoot() {}

void removeTemporaryRoot() {}

std::optional<std::string> changeRoot(const std::optional<std::string>&) { refuse(); }

}  // namespace tool
