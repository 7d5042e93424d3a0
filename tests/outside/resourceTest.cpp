// What the library takes of its host, and what it leaves alone at the host's end.

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <thread>

#include "tests/support/routing.h"
#include "tests/support/wait.h"

namespace test {

namespace {

class tResources : public tWaiting {
 protected:
  void SetUp() override { describe("; classic\n", kRoutingDescription); }

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
  const std::ptrdiff_t before = memoryInUse();
  for (std::size_t n = 0; n < kCount; ++n) sessions[n] = open();
  EXPECT_LT((memoryInUse() - before) / static_cast<std::ptrdiff_t>(kCount), 1024);
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
    if (before == 0) before = memoryInUse();
    EXPECT_LT(memoryInUse() - before, 8192) << what;
  }
}

using tConcurrencyOfExit = tResources;

// Threads that query, read the registry, wait and route go on while the process ends.
TEST_F(tConcurrencyOfExit, endsAmidThreads) {
  constexpr int kExitStatus = 7;
  machine_.setRegistryNumber("SOFTWARE\\X", "n", 1);
  for (int round = 0; round < 3; ++round) {
    const auto end = [] {
      std::thread([] {
        std::this_thread::sleep_for(std::chrono::minutes(2));
        std::_Exit(1);
      }).detach();
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
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(kExitStatus), "") << round;
  }
}

}  // namespace

}  // namespace test
