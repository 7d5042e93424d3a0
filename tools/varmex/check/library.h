#ifndef TOOLS_VARMEX_CHECK_LIBRARY_H
#define TOOLS_VARMEX_CHECK_LIBRARY_H

#include "tools/varmex/check/rules.h"
#include "varmex/varmex.hpp"

namespace tool {

// Asks the library for everything about the chassis of the plan. Where it refuses something that
// no finding explains, though a file could be the cause, there is one more finding: nothing that
// the rules do not know passes in silence.
void checkAnswers(tRules& rules, const tPlan& plan, const varmex::Session& session);

// The same for a session that does not open.
void checkFailure(tRules& rules, const varmex::Error& failure);

}  // namespace tool

#endif
