#include "tools/varmex/describe/lines.h"

#include <vector>

#include "tools/varmex/describe/fields.h"

namespace tool {

std::string linesOf(std::uint32_t mask) {
  std::vector<std::string> runs;
  for (int line = 0; line < 8; ++line) {
    if (!(mask >> line & 1)) continue;
    int last = line;
    while (mask >> (last + 1) & 1) ++last;
    runs.push_back(line == last ? std::to_string(line)
                                : std::to_string(line) + '-' + std::to_string(last));
    line = last;
  }
  return joined(runs, ",");
}

}  // namespace tool
