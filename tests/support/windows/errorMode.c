/* A library that remembers the error mode of the thread that loaded it. */
#include <windows.h>

static DWORD mode;

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
  (void)instance;
  (void)reserved;
  if (reason == DLL_PROCESS_ATTACH) mode = GetThreadErrorMode();
  return TRUE;
}

__declspec(dllexport) DWORD errorModeAtLoad(void) { return mode; }
