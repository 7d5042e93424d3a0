// What the library takes of its host, and what it leaves alone at the host's end.

#include <dlfcn.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <thread>

#include "tests/support/posix/child.h"
#include "tests/support/routing.h"
#include "tests/support/wait.h"

namespace test {

namespace {

class tResources : public tWaiting {
 protected:
  void SetUp() override { describe("; classic\n", kRoutingDescription); }

  // In bytes, those of the whole process. A sanitizer's memory is none of it.
  static std::ptrdiff_t memory() { return static_cast<std::ptrdiff_t>(mallinfo2().uordblks); }

  static std::string repeated(const std::string& entry, std::size_t count) {
    std::string list = "[";
    for (std::size_t n = 0; n < count; ++n) list += entry + ',';
    list.back() = ']';
    return list;
  }
};

TEST_F(tResources, aRoutingSessionThatNeverRoutesCostsLittle) {
  constexpr std::size_t kCount = 1000;
  std::vector<tRoutingSession> sessions(kCount + 1);
  const auto open = [this] {
    return tRoutingSession(telmar_ra_varmex_createSession("5.0.0:7 idle", std::realloc, status_));
  };
  sessions[kCount] = open();
  const std::ptrdiff_t before = memory();
  for (std::size_t n = 0; n < kCount; ++n) sessions[n] = open();
  EXPECT_LT((memory() - before) / static_cast<std::ptrdiff_t>(kCount), 1024);
}

TEST_F(tResources, aLargeCalculationIsGivenBack) {
  constexpr std::size_t kCount = 20'000;
  const std::string one = R"({"terminal":"PXI_Trig5","cost":0,"constraints":{}})";
  const std::string seeds = repeated(one, kCount);
  const std::string destinations = repeated("\"PXI_Trig4\"", kCount);
  const auto lastSeed = [&seeds](const std::string& content) {
    return seeds.substr(0, seeds.size() - 1) + ",{" + content + "}]";
  };
  const struct {
    const char* what;
    std::string seeds;
    std::string destinations;
    bool isGood;
  } cases[] = {
      {"small", '[' + one + ']', "[\"PXI_Trig5\"]", true},
      {"large", seeds, destinations, true},
      {"an unknown seed at the end", lastSeed(R"("terminal":"none","cost":0,"constraints":{})"),
       destinations, false},
      {"a bad seed at the end", lastSeed(R"("terminal":"PXI_Trig5")"), destinations, false},
  };
  const tRoutingSession session(
      telmar_ra_varmex_createSession("5.0.0:7 large", std::realloc, status_));
  std::ptrdiff_t before = 0;
  for (const auto& [what, seedsJson, destinationsJson, isGood] : cases) {
    {
      tStatus status;
      tText reply;
      telmar_ra_varmex_calculateRoute(session.get(), seedsJson.c_str(), destinationsJson.c_str(),
                                      nullptr, &reply.text, status);
      EXPECT_EQ(status.code() == 0, isGood) << what << ": " << status.text();
    }
    if (before == 0) before = memory();
    EXPECT_LT(memory() - before, 8192) << what;
  }
}

// A copy of the library, which this program does not hold on to, loaded, used and unloaded: one of
// its own beside that of the program.
TEST_F(tResources, loadingAndUnloadingKeepsNothing) {
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
    const std::ptrdiff_t before = memory();
    for (int n = 0; n < kCycles; ++n) cycle();
    growth = std::min(growth, memory() - before);
    inChild([this] { EXPECT_EQ(wait(0), varmex_waitTimedOut); });
  }
  EXPECT_LT(growth / kCycles, 8);
  EXPECT_EQ(openDescriptors(), descriptors + 4) << "those of this program's own watch";
}

using tConcurrencyOfExit = tResources;

// The end of the process takes a while behind the end of all libraries: a stream is written last.
void endLate() {
  const auto write = [](void*, const char*, std::size_t size) -> ssize_t {
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    return static_cast<ssize_t>(size);
  };
  std::fputc('x', fopencookie(nullptr, "w", {nullptr, write, nullptr, nullptr}));
}

// Threads that query, read the registry, wait and route go on while the process ends.
TEST_F(tConcurrencyOfExit, endsAmidThreads) {
  constexpr int kExitStatus = 7;
  machine_.setRegistryNumber("SOFTWARE\\X", "n", 1);
  for (int round = 0; round < 3; ++round) {
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      alarm(120);
      const auto go = [](void (*work)(varmex_Item*)) {
        std::thread([work] {
          varmex_Item* const session = varmex_openPXISession(0, nullptr);
          while (true) work(session);
        }).detach();
      };
      go([](varmex_Item*) {
        const tItem session(varmex_openPXISession(0, nullptr));
        const tItem module(varmex_openChassisByNumber(session.get(), 1, nullptr));
        const tItem place(varmex_openSlotByNumber(module.get(), 2, nullptr));
        varmex_getStringAttribute(place.get(), varmex_str_TriggerBusStableName, nullptr);
      });
      go([](varmex_Item* session) { varmex_waitForSessionInvalidation(session, 1, nullptr); });
      go([](varmex_Item* session) {
        varmex_waitForSessionInvalidation(session, 0xFFFFFFFF, nullptr);
      });
      go([](varmex_Item*) {
        static std::atomic<int> count{0};
        const std::string name = "5.0.0:7 exit " + std::to_string(++count);
        const tRoutingSession session(
            telmar_ra_varmex_createSession(name.c_str(), std::realloc, nullptr));
        tText reply;
        telmar_ra_varmex_calculateRoute(session.get(), seed("PXI_Trig5", "a").c_str(),
                                        "[\"PXI_Trig5\"]", nullptr, &reply.text, nullptr);
      });
      std::this_thread::sleep_for(std::chrono::milliseconds(60));
      endLate();
      std::exit(kExitStatus);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), kExitStatus);
  }
}

}  // namespace

}  // namespace test
