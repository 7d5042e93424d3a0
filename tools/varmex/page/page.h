#ifndef TOOLS_VARMEX_PAGE_PAGE_H
#define TOOLS_VARMEX_PAGE_PAGE_H

#include <string>
#include <vector>

#include "tools/varmex/check/findings.h"
#include "tools/varmex/describe/address.h"
#include "tools/varmex/describe/json.h"
#include "tools/varmex/page/about.h"
#include "tools/varmex/saved/savedFile.h"

namespace tool {

// What a page tells of an installation.
struct tReport {
  tJson description;  // as `describe` gives it, with its faults marked
  tJson modules;      // as `describeModules` gives it, the same
  std::vector<tFinding> findings;
  tLineMaps lineMaps;
  tSavedInstallation saved;
  std::vector<std::string> files;  // that it was read from, as they are told
};

// The page: one HTML document that needs nothing else, with the script and the style of this
// folder. A policy in it lets nothing else run, and all texts of the report are escaped.
std::string pageOf(const tReport& report, tPciNotation notation);

}  // namespace tool

#endif
