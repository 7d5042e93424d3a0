// What the library takes of its host, and what it leaves alone at the host's end.

#include <atomic>
#include <thread>
#include <tuple>

#include "tests/support/routing.h"
#include "tests/support/wait.h"

namespace test {

namespace {

class tResources : public tWaiting {
 protected:
  void SetUp() override { describe("; classic\n", kRoutingDescription); }
};

TEST_F(tResources, aRoutingSessionThatNeverRoutesCostsLittle) {
  constexpr std::size_t kCount = 1000;
  std::vector<tRoutingSession> sessions(kCount + 1);
  sessions[kCount] = openRouting("5.0.0:7 idle", status_);
  const std::ptrdiff_t before = memoryInUse();
  for (std::size_t n = 0; n < kCount; ++n) sessions[n] = openRouting("5.0.0:7 idle", status_);
  EXPECT_LT((memoryInUse() - before) / static_cast<std::ptrdiff_t>(kCount), 1024);
}

TEST_F(tResources, aLargeCalculationIsGivenBack) {
  constexpr std::size_t kCount = 20'000;
  const std::string one = R"({"terminal":"PXI_Trig5","cost":0,"constraints":{}})";
  const std::string seeds = repeated(one, kCount);
  const std::string destinations = repeated("\"PXI_Trig4\"", kCount);
  const std::string allButEnd = seeds.substr(0, seeds.size() - 1);
  const std::tuple<const char*, std::string, std::string, bool> cases[] = {
      {"small", '[' + one + ']', "[\"PXI_Trig5\"]", true},
      {"large", seeds, destinations, true},
      {"an unknown seed at the end",
       allButEnd + R"(,{"terminal":"none","cost":0,"constraints":{}}])", destinations, false},
      {"a bad seed at the end", allButEnd + R"(,{"terminal":"PXI_Trig5"}])", destinations, false},
  };
  const tRoutingSession session = openRouting("5.0.0:7 large", status_);
  std::ptrdiff_t before = 0;
  for (const auto& [what, seedsJson, destinationsJson, isGood] : cases) {
    calculate(session, seedsJson, destinationsJson, status_);
    EXPECT_EQ(status_.code() == 0, isGood) << what << ": " << status_.text();
    varmex_releaseStatus(status_);
    if (before == 0) before = memoryInUse();
    EXPECT_LT(memoryInUse() - before, 8192) << what;
  }
  constexpr std::uint32_t kTicket = 2;
  EXPECT_NE(route(session, "PXI_Trig6", std::string(100'000, 't'), status_), "[]");
  telmar_ra_varmex_reserveRoute(session.get(), kTicket, nullptr, status_);
  telmar_ra_varmex_destroyRoute(session.get(), kTicket);
  EXPECT_EQ(status_.code(), 0) << status_.text();
  EXPECT_LT(memoryInUse() - before, 8192) << "a long token that was held";
  calculate(session, '[' + one + ']', repeated("\"PXI_Trig5\"", kCount), status_);
  for (std::uint32_t n = 0; n < 2 * kCount; ++n) {
    telmar_ra_varmex_destroyRoute(session.get(), n % 1024 + 1);
  }
  EXPECT_LT(memoryInUse() - before, 200'000) << "many routes that were destroyed";
}

using tConcurrencyOfExit = tResources;

// Threads that query, read the registry, wait and route go on while the process ends, and see a
// change of the description on its way out.
TEST_F(tConcurrencyOfExit, endsAmidThreads) {
  constexpr int kExitStatus = 7;
  machine_.setRegistryNumber("SOFTWARE\\X", "n", 1);
  for (int round = 0; round < 3; ++round) {
    const auto end = [this] {
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
        const tRoutingSession session = openRouting(name, nullptr);
        if (session) route(session, "PXI_Trig5", "a", nullptr);
      });
      std::this_thread::sleep_for(std::chrono::milliseconds(60));
      endLate();
      machine_.writePxieSys(kRoutingDescription + std::string("; more\n"));
      std::exit(kExitStatus);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(kExitStatus), "") << round;
  }
}

}  // namespace

}  // namespace test
