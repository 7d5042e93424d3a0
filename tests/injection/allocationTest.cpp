// Every exported function with every one of its allocations failing in turn.

#include "tests/injection/allocation.h"
#include "tests/injection/scenarios.h"
#include "tests/support/serviceLibrary.h"

namespace test {

namespace {

// The routing functions and the platform layer, which tells of paths, have a code of their own.
bool isMemory(std::int32_t code) {
  return code == varmex_errorMemoryFull || code == ostrelerr_memoryFull;
}

class tInjection : public tScenarios {
 protected:
  // Nothing but the one call that found no memory answers otherwise, and that says so. `expected`
  // is what the whole comes to without that.
  void inject(const tScenario& scenario, std::int32_t expected = 0) {
    const auto isGood = [=](const std::string& answer, const std::string& undisturbed,
                            const tStatus& status) {
      if (status.code() != expected) return isMemory(status.code());
      const std::vector<std::string> lines = split(answer, "\n"), others = split(undisturbed, "\n");
      int failures = 0;
      for (std::size_t n = 0; n < std::min(lines.size(), others.size()); ++n) {
        if (lines[n] == others[n]) continue;
        const std::size_t mark = others[n].find_first_of("=!");
        if (!lines[n].starts_with(others[n].substr(0, mark) + '!')) return false;
        // What needs the item that could not be opened has no handle.
        const std::int32_t code = std::stoi(lines[n].substr(mark + 1));
        const bool isBehind = failures > 0 && code == varmex_errorInvalidHandle;
        // This one tells of whatever went wrong when the chassis was opened.
        const bool isDescriptionFile =
            others[n].starts_with("4102s=") && code == varmex_errorInformationNotAvailable;
        if (!isMemory(code) && !isBehind && !isDescriptionFile) return false;
        ++failures;
      }
      return lines.size() == others.size() && failures < 4;
    };
    tScenarios::inject(scenario, failAllocation, allocationFailed, isGood, expected);
  }
};

TEST_F(tInjection, opening) {
  const auto open = [](std::uint32_t flags) {
    return [flags](tStatus& status) { return openAll(flags, status); };
  };
  inject(open(0));  // beside a session of the same files
  session_.reset();
  inject(open(0));
  inject(open(1));
  const tInstalledServiceLibrary service("full");
  inject(open(1));
  service.tell("initialize -9");
  inject(open(1));
}

TEST_F(tInjection, refusing) {
  const std::pair<const char*, std::int32_t> cases[] = {
      {"[System]\nChassisList=1\n[Chassis1]\nSlotList=2,3\n[Chassis1Slot2]\n"
       "PCIBusNumber=1\nPCIDeviceNumber=1\n[Chassis1Slot3]\nPCIBusNumber=1\n"
       "PCIDeviceNumber=1\n",
       varmex_errorInformationConflict},
      {"[System]\nChassisList=x\n", varmex_errorInformationNotAvailable}};
  for (const auto& [pxiSys, code] : cases) {
    machine_.writePxiSys(pxiSys);
    inject(
        [](tStatus& status) {
          EXPECT_FALSE(tItem(call(varmex_openPXISession, 0, status)));
          return std::string();
        },
        code);
  }
}

TEST_F(tInjection, walking) {
  for (const std::uint32_t kind : kKinds) {
    inject([&](tStatus& status) { return walk(session_.get(), kind, status); });
  }
}

// A failure on the way to the list must not pass for a list without the manager.
TEST_F(tInjection, triggerManagers) {
  inject(askTriggerManager);
  machine_.setRegistryValue("SOFTWARE\\Corvane\\COR-DUNMOR", "TriggerManagersNoForward", 7,
                            std::string("B\0A\\T\0\0", 7));
  for (const auto& [variant, answers] :
       {std::pair{"full", ""}, {"full", "modeStatus -9"}, {"withoutmode", ""}}) {
    const tInstalledServiceLibrary service(variant, answers);
    inject(askTriggerManager);
  }
}

// The first wait of a session sets its watch up, so each call has a session of its own.
TEST_F(tInjection, waiting) {
  std::vector<tItem> sessions;
  for (int n = 0; n < 400; ++n) sessions.emplace_back(varmex_openPXISession(0, status_));
  for (const bool cancels : {false, true}) {
    inject([&](tStatus& status) {
      const tItem session = std::move(sessions.back());
      sessions.pop_back();
      if (cancels) return call(varmex_cancelWaitForInvalidation, session.get()), std::string();
      const auto result = call(varmex_waitForSessionInvalidation, session.get(), 0, status);
      EXPECT_EQ(result == varmex_waitTimedOut, status.code() == 0) << status.text();
      return std::string();
    });
  }
}

TEST_F(tInjection, routing) { inject(routeAll); }

}  // namespace

}  // namespace test
