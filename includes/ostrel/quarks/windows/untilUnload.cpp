#include "ostrel/quarks/untilUnload.h"

#include <windows.h>

namespace varmex::inline nOSTRELS100 {

namespace {

bool isProcessEnding = false;

}  // namespace

bool isLastUse() { return !isProcessEnding; }

void expectExit() {}

}  // namespace varmex::inline nOSTRELS100

// At the end of the process its other threads have ended wherever they were, maybe amid a change or
// within the heap.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID atProcessEnd) {
  if (reason == DLL_PROCESS_DETACH) varmex::isProcessEnding = atProcessEnd != nullptr;
  return TRUE;
}
