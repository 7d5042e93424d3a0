#include <gtest/gtest.h>
#include <io.h>
#include <windows.h>

#include "corpxiTools/fileSystem/inputFile.h"
#include "corpxiTools/fileSystem/utils.h"
#include "ostrel/quarks/dynamicLibrary.h"
#include "tests/support/testMachine.h"

namespace varmex {

namespace {

using test::tTestMachine;

DWORD injectedError = 0;

BOOL WINAPI getAttributesOrFail(LPCSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID attributes) {
  if (injectedError != 0) return SetLastError(injectedError), FALSE;
  const HMODULE kernel = GetModuleHandleA("kernel32");
  const auto real = reinterpret_cast<decltype(&getAttributesOrFail)>(
      reinterpret_cast<void*>(GetProcAddress(kernel, "GetFileAttributesExA")));
  return real(path, level, attributes);
}

}  // namespace

// Through this the program's own objects call the system's function.
extern "C" {
decltype(&getAttributesOrFail) __imp_GetFileAttributesExA = getAttributesOrFail;
}

namespace {

TEST(FileExists, answersByTheSystemsError) {
  const tTestMachine machine;
  const std::string folder = machine.folder().string();
  const struct {
    std::string path;
    DWORD injected;
    std::int32_t expected;
  } cases[] = {{folder + "\\none", 0, 0},
               {folder + "\\none\\none", 0, 0},
               {"Q:\\none", 0, 0},
               {folder + "\\a|b", 0, -52005},
               {folder + "\\a\"b", 0, -52005},
               {folder, ERROR_FILE_NOT_FOUND, 0},
               {folder, ERROR_PATH_NOT_FOUND, 0},
               {folder, ERROR_ACCESS_DENIED, -50207},
               {folder, ERROR_INVALID_PARAMETER, -52005},
               {folder, ERROR_INVALID_NAME, -52005},
               {folder, ERROR_NOT_READY, -50202},
               {folder, ERROR_SHARING_VIOLATION, -50202},
               {folder, ERROR_BAD_NETPATH, -50202}};
  for (const auto& [path, injected, expected] : cases) {
    std::int32_t status = 0;
    injectedError = injected;
    EXPECT_FALSE(fileExists(path, status)) << path;
    injectedError = 0;
    EXPECT_EQ(status, expected) << path << ' ' << injected;
  }
  std::int32_t status = 0;
  EXPECT_TRUE(fileExists(folder, status));
}

TEST(InputFile, isNotInherited) {
  tTestMachine machine;
  machine.writePxiSys("x");
  const tInputFile file(machine.pxiSys().string().c_str());
  ASSERT_TRUE(file.isOpen());
  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(file.descriptor()));
  DWORD flags = HANDLE_FLAG_INHERIT;
  EXPECT_TRUE(GetHandleInformation(handle, &flags));
  EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0U);
}

TEST(DynamicLibrary, isLoadedWithoutMessageBoxes) {
  DWORD before = 0;
  SetThreadErrorMode(SEM_NOGPFAULTERRORBOX, &before);
  void* const module = loadDynamicLibrary("varmex_error_mode");
  EXPECT_EQ(GetThreadErrorMode(), DWORD{SEM_NOGPFAULTERRORBOX});
  SetThreadErrorMode(before, nullptr);
  ASSERT_NE(module, nullptr);
  const auto mode = reinterpret_cast<DWORD (*)()>(findFunction(module, "errorModeAtLoad"));
  ASSERT_NE(mode, nullptr);
  constexpr DWORD kSilent = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;
  EXPECT_EQ(mode() & kSilent, kSilent);
  freeDynamicLibrary(module);
}

}  // namespace

}  // namespace varmex
