// What the library takes of a host that loads and unloads it.

#include <dlfcn.h>

#include <algorithm>
#include <cstdint>

#include "tests/support/posix/child.h"
#include "tests/support/routing.h"
#include "tests/support/wait.h"

namespace test {

namespace {

class tLoading : public tWaiting {
 protected:
  void SetUp() override { describe("; classic\n", kRoutingDescription); }
};

// A copy of the library, which this program does not hold on to, loaded, used and unloaded: one of
// its own beside that of the program.
TEST_F(tLoading, loadingAndUnloadingKeepsNothing) {
  machine_.setRegistryNumber("SOFTWARE\\X", "n", 1);
  Dl_info library{};
  ASSERT_NE(dladdr(reinterpret_cast<const void*>(&varmex_close), &library), 0);
  const std::filesystem::path copy = machine_.folder() / "copy.so";
  std::filesystem::copy_file(library.dli_fname, copy);
  const auto cycle = [&] {
    void* const loaded = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(loaded) << dlerror();
    const auto find = [loaded](auto function, const char* name) {
      const auto found = reinterpret_cast<decltype(function)>(dlsym(loaded, name));
      EXPECT_NE(found, function);
      return found;
    };
#define FIND(function) find(&function, #function)
    varmex_Item* const session = FIND(varmex_openPXISession)(0, status_);
    varmex_Item* const other = FIND(varmex_openPXISession)(0, status_);
    EXPECT_EQ(FIND(varmex_waitForSessionInvalidation)(session, 0, status_), varmex_waitTimedOut);
    EXPECT_EQ(wait(0), varmex_waitTimedOut);
    FIND(varmex_close)(session);
    FIND(varmex_close)(other);
    telmar_ra_Session* const routing =
        FIND(telmar_ra_varmex_createSession)("5.0.0:7", std::realloc, status_);
    tText reply;
    FIND(telmar_ra_varmex_calculateRoute)
    (routing, seed("PXI_Trig5", "a").c_str(), "[\"PXI_Trig5\"]", nullptr, &reply.text, status_);
    FIND(telmar_ra_varmex_destroySession)(routing);
#undef FIND
    EXPECT_EQ(status_.code(), 0) << status_.text();
    dlclose(loaded);
    EXPECT_FALSE(dlopen(copy.c_str(), RTLD_NOW | RTLD_NOLOAD)) << "still loaded";
  };
  const int descriptors = openDescriptors();
  // The system enlarges lists of its own now and then.
  constexpr int kCycles = 10;
  std::ptrdiff_t growth = PTRDIFF_MAX;
  for (int stretch = 0; stretch < 4; ++stretch) {
    const std::ptrdiff_t before = memoryInUse();
    for (int n = 0; n < kCycles; ++n) cycle();
    growth = std::min(growth, memoryInUse() - before);
    inChild([this] { EXPECT_EQ(wait(0), varmex_waitTimedOut); });
  }
  EXPECT_LT(growth / kCycles, 8);
  EXPECT_EQ(openDescriptors(), descriptors + 4) << "those of this program's own watch";
}

}  // namespace

}  // namespace test
