#include <windows.h>

#include <atomic>
#include <filesystem>
#include <thread>
#include <vector>

#include "tests/support/model.h"
#include "tests/support/testPlace.h"

namespace test {

namespace {

namespace fs = std::filesystem;

// What a process has few of, or what grows.
struct tHolding {
  std::size_t freeThreadIndexes;
  std::size_t freeFibreIndexes;
  std::uintptr_t nextHandle;  // the system hands out the lowest that is free
  std::ptrdiff_t memory;      // bytes in blocks of all heaps
};

template <class Take, class GiveBack>
std::size_t countFree(Take take, GiveBack giveBack) {
  std::vector<DWORD> taken;
  taken.reserve(10'000);
  for (DWORD index = take(); index != TLS_OUT_OF_INDEXES; index = take()) taken.push_back(index);
  for (const DWORD index : taken) giveBack(index);
  return taken.size();
}

tHolding takeStock() {
  const std::size_t threadIndexes = countFree(TlsAlloc, TlsFree);
  const std::size_t fibreIndexes = countFree([] { return FlsAlloc(nullptr); }, FlsFree);
  const HANDLE next = CreateEventA(nullptr, FALSE, FALSE, nullptr);
  CloseHandle(next);
  return {threadIndexes, fibreIndexes, reinterpret_cast<std::uintptr_t>(next), memoryInUse()};
}

// The library once more, under a name of its own: that which the tests are linked to stays loaded.
class tLoadedLibrary {
 public:
  explicit tLoadedLibrary(const fs::path& path) : module_(LoadLibraryW(path.c_str())) {}
  ~tLoadedLibrary() { FreeLibrary(module_); }
  tLoadedLibrary(const tLoadedLibrary&) = delete;
  tLoadedLibrary& operator=(const tLoadedLibrary&) = delete;

  // The null handle fails by an exception within the library.
  std::int32_t fail() const {
    tStatus status;
    find(varmex_getU32Attribute, "varmex_getU32Attribute")(nullptr, 0, status);
    return status.code();
  }

  bool useSession() const {
    tStatus status;
    varmex_Item* const session = find(varmex_openPXISession, "varmex_openPXISession")(0, status);
    find(varmex_getU32Attribute, "varmex_getU32Attribute")(session, 99, status);
    find(varmex_close, "varmex_close")(session);
    return status.code() == varmex_errorAttributeNotApplicable;
  }

 private:
  // This library's own of a function that the tests are linked to.
  template <class Function>
  Function* find(const Function&, const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

  HMODULE module_;
};

// A thread that outlives the library, again and again. It takes turns with its owner without what
// makes something later: the locks of the compiler's library take handles when they are contended.
class tLastingThread {
 public:
  std::int32_t fail(const tLoadedLibrary& library) {
    library_ = &library;
    while (library_) Sleep(0);
    return code_;
  }

 private:
  void run(const std::stop_token& end) {
    for (; !end.stop_requested(); Sleep(0)) {
      if (!library_) continue;
      code_ = library_.load()->fail();
      library_ = nullptr;
    }
  }

  std::atomic<const tLoadedLibrary*> library_{nullptr};
  std::int32_t code_ = 0;
  std::jthread thread_{[this](const std::stop_token& end) { run(end); }};
};

TEST(WindowsHost, canLoadAndFreeTheLibraryForEver) {
  const tTestMachine machine;
  const fs::path copy = tTestPlace::folder() / "varmex_loaded.dll";
  fs::copy_file(tTestPlace::programs() / "varmex.dll", copy, fs::copy_options::overwrite_existing);
  tLastingThread lasting;
  const auto cycle = [&] {
    const tLoadedLibrary library(copy);
    ASSERT_EQ(library.fail(), varmex_errorInvalidHandle);
    ASSERT_EQ(lasting.fail(library), varmex_errorInvalidHandle);
    std::int32_t code = 0;
    std::thread([&] { code = library.fail(); }).join();
    ASSERT_EQ(code, varmex_errorInvalidHandle);
    ASSERT_TRUE(library.useSession());
  };
  // What the system itself keeps of a first loading is there behind some.
  for (int i = 0; i < 10; ++i) cycle();
  const tHolding before = takeStock();
  for (int i = 0; i < 40; ++i) cycle();
  const tHolding after = takeStock();
  // The compiler's thread library takes a handle or two in the test itself, at times of its own.
  EXPECT_LT(after.nextHandle, before.nextHandle + 40);
  EXPECT_EQ(after.freeThreadIndexes, before.freeThreadIndexes);
  EXPECT_EQ(after.freeFibreIndexes, before.freeFibreIndexes);
  EXPECT_EQ(after.memory, before.memory);
  fs::remove(copy);
}

}  // namespace

}  // namespace test
