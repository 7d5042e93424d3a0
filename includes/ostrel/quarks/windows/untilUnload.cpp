#include "ostrel/quarks/untilUnload.h"

namespace varmex::inline nOSTRELS100 {

// At the end of a process the system has ended all other threads by then.
bool isLastUse() { return true; }

void expectExit() {}

}  // namespace varmex::inline nOSTRELS100
