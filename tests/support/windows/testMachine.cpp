#include "tests/support/testMachine.h"

#include <windows.h>

#include <cstdlib>
#include <stdexcept>
#include <vector>

namespace test {

namespace fs = std::filesystem;

namespace {

bool isThrowaway() {
  if (std::getenv("VARMEX_THROWAWAY_MACHINE")) return true;
  const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
  return ntdll && GetProcAddress(ntdll, "wine_get_version");
}

}  // namespace

struct tTestMachine::tState {
  std::vector<std::string> keys;
};

tTestMachine::tTestMachine() : state_(std::make_unique<tState>()) {
  if (!isThrowaway()) throw std::runtime_error("this machine's own files are not for tests");
  for (const auto& path : {pxiSys(), pxieSys(), configuration()}) fs::remove(path);
}

tTestMachine::~tTestMachine() {
  std::error_code ignored;
  for (const auto& path : {pxiSys(), pxieSys(), configuration()}) fs::remove(path, ignored);
  for (const std::string& key : state_->keys) {
    RegDeleteTreeA(HKEY_LOCAL_MACHINE, key.c_str());
  }
}

fs::path tTestMachine::folder() const {
  char folder[MAX_PATH] = {};
  GetWindowsDirectoryA(folder, sizeof folder);
  return folder;
}

fs::path tTestMachine::configuration() const {
  return fs::path(std::getenv("ProgramData")) / "PXISA" / "configuration.ini";
}

void tTestMachine::setRegistryValue(const std::string& key, const std::string& name,
                                    std::uint32_t type, const std::string& bytes) {
  state_->keys.push_back(key);
  HKEY handle = nullptr;
  RegCreateKeyExA(HKEY_LOCAL_MACHINE, key.c_str(), 0, nullptr, 0, KEY_WRITE | KEY_WOW64_64KEY,
                  nullptr, &handle, nullptr);
  const LSTATUS status =
      RegSetValueExA(handle, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                     static_cast<DWORD>(bytes.size()));
  RegCloseKey(handle);
  if (status != ERROR_SUCCESS) throw std::runtime_error("cannot set " + key);
}

tExclusiveLock::tExclusiveLock(const fs::path& path) {
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  nullptr, OPEN_EXISTING, 0, nullptr);
  OVERLAPPED range{};
  if (!LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, 0, 0xFFFFFFFF, 0xFFFFFFFF, &range)) {
    throw std::runtime_error("no lock");
  }
  held_ = {nullptr, [file, range](auto) mutable {
             UnlockFileEx(file, 0, 0xFFFFFFFF, 0xFFFFFFFF, &range);
             CloseHandle(file);
           }};
}

bool awaitSleep() {
  Sleep(100);
  return true;
}

void runWithStack(std::size_t bytes, const std::function<void()>& work) {
  const auto run = [](void* own) -> DWORD {
    (**static_cast<const std::function<void()>**>(own))();
    return 0;
  };
  const std::function<void()>* own = &work;
  const HANDLE thread =
      CreateThread(nullptr, bytes, run, &own, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  if (!thread) throw std::runtime_error("no thread");
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
}

std::ptrdiff_t memoryInUse() {
  HANDLE heaps[64] = {};
  const DWORD count = std::min<DWORD>(GetProcessHeaps(64, heaps), 64);
  std::ptrdiff_t total = 0;
  for (DWORD i = 0; i < count; ++i) {
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heaps[i]);
    while (HeapWalk(heaps[i], &entry)) {
      if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) total += entry.cbData;
    }
    HeapUnlock(heaps[i]);
  }
  return total;
}

void endLate() {}

}  // namespace test
