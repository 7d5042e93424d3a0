#include "tools/varmex/machine/thisMachine.h"

#include <unistd.h>

#include <cstdlib>

namespace tool {

std::string hostName() {
  char name[256] = "";
  if (gethostname(name, sizeof name - 1) != 0) return {};
  return name;
}

const char* platformName() { return "linux"; }

std::string pathBelowRoot(const std::string& path) {
  const char* const root = secure_getenv("VARMEX_FSROOT");
  return root ? root + path : path;
}

}  // namespace tool
