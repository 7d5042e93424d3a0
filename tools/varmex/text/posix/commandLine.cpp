#include "tools/varmex/text/commandLine.h"

namespace tool {

std::vector<std::string> commandLine(int count, char** words) {
  return {words + (count > 0 ? 1 : 0), words + count};
}

}  // namespace tool
