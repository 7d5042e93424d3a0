#include "tools/varmex/machine/thisMachine.h"

#include <windows.h>

namespace tool {

std::string hostName() {
  char name[256] = "";
  DWORD size = sizeof name;
  return GetComputerNameA(name, &size) ? name : "";
}

const char* platformName() { return "windows"; }

std::string pathBelowRoot(const std::string& path) { return path; }

}  // namespace tool
