#ifndef TOOLS_VARMEX_CHECK_CHECK_H
#define TOOLS_VARMEX_CHECK_CHECK_H

#include <functional>
#include <ostream>

#include "tools/varmex/check/findings.h"
#include "tools/varmex/describe/json.h"
#include "tools/varmex/machine/pciTree.h"
#include "varmex/varmex.hpp"

namespace tool {

// What is wrong or doubtful with a description: findings by file and line, each with the text of
// its line. `open` is how the library reads it. Throws std::runtime_error when there is none or a
// file of it can't be read. With the PCI tree of the machine also what is different there.
std::vector<tFinding> checkDescription(const std::function<varmex::Session()>& open,
                                       const tPciTree* machine = nullptr);

// For a program, and for a person.
tJson findingsJson(const std::vector<tFinding>& findings);
void showFindings(const std::vector<tFinding>& findings, std::ostream& out);

}  // namespace tool

#endif
