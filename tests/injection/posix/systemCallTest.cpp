// Sessions, walks, waits and routing with every one of their system calls failing in turn.

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>
#include <sstream>

#include "tests/support/model.h"
#include "tests/support/posix/systemCalls.h"
#include "tests/support/routing.h"
#include "tests/support/serviceLibrary.h"

namespace test {

namespace {

constexpr const char* kPxiSys =
    "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSlotList=2\n"
    "[Chassis1Slot2]\nPCISlotPath=a,b\nPCIBusNumber=9\nPCIDeviceNumber=1\n";

// Answers in lines "what=value", or "what!code" for a failure that is one call's alone.
using tScenario = std::function<std::string(tStatus&)>;

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// Whether each line is that of the other answer, or a failure at this place.
bool agrees(const std::string& answer, const std::string& other) {
  const std::vector<std::string> lines = linesOf(answer), others = linesOf(other);
  const auto agree = [](const std::string& line, const std::string& own) {
    return line == own || line.starts_with(own.substr(0, own.find_first_of("=!")) + "!-");
  };
  return std::ranges::equal(lines, others, agree);
}

class tSystemCallInjection : public tModel, public testing::WithParamInterface<tSystemCall> {
 protected:
  void SetUp() override {
    machine_.writeConfiguration();
    machine_.setRegistryText("SOFTWARE\\PXISA\\CurrentVersion", "ChassisDescriptionFilePath", "d");
    machine_.setRegistryText("SOFTWARE\\PXISA\\Services\\Trigger Managers\\T", "Library", "t.so");
    machine_.writePxiSys(kPxiSys);
    machine_.writePxieSys(std::string(kRoutingDescription) + "[Chassis1]\nTriggerManager=T\n");
    alarm(600);  // ends the program if anything hangs
  }
  void TearDown() override { alarm(0); }

  // The scenario must come to what it answers undisturbed, or to a failure that is told; afterwards
  // it works as ever, and nothing is left open. What can't be loaded counts as absent: `unloaded`
  // is the answer then, if there is one.
  void inject(const tScenario& scenario, const std::string& unloaded = "") {
    const std::string undisturbed = run(scenario);
    const std::ptrdiff_t descriptors = openDescriptors();
    const auto& [call, errors] = GetParam();
    for (const int error : errors) {
      for (long n = 1; !HasFailure(); ++n) {
        tStatus status;
        failSystemCall(call, n, error);
        const std::string answer = scenario(status);
        if (!systemCallFailed()) break;
        SCOPED_TRACE(std::to_string(n) + ": " + std::strerror(error));
        const bool isAbsence = call.starts_with("dl") && answer == unloaded;
        EXPECT_TRUE(status.code() != 0 || agrees(answer, undisturbed) || isAbsence) << answer;
        EXPECT_TRUE(isWellFormed(status.text())) << status.text();
        EXPECT_EQ(run(scenario), undisturbed);
        EXPECT_EQ(openDescriptors(), descriptors);
      }
    }
  }

  static std::string run(const tScenario& scenario) {
    tStatus status;
    std::string answer = scenario(status);
    EXPECT_EQ(status.code(), 0) << status.text();
    return answer;
  }
};

class tChangeAmidCalls : public tModel {};

std::string line(std::uint32_t attribute, const std::string& value, const tStatus& status) {
  return std::to_string(attribute) +
         (status.code() == 0 ? '=' + value : '!' + std::to_string(status.code())) + '\n';
}

// What an item answers to these numbers, as texts and as numbers.
std::string attributes(varmex_Item* item, std::uint32_t first, std::uint32_t last) {
  std::string answer;
  for (std::uint32_t attribute = first; attribute <= last; ++attribute) {
    tStatus status;
    const char* const text = varmex_getStringAttribute(item, attribute, status);
    answer += line(attribute, text ? text : "", status);
    varmex_releaseStatus(status);
    const std::uint32_t number = varmex_getU32Attribute(item, attribute, status);
    answer += line(attribute, std::to_string(number), status);
    EXPECT_TRUE(isWellFormed(status.text())) << status.text();
  }
  return answer;
}

std::string walk(varmex_Item* session, std::uint32_t kind, std::uint32_t first, std::uint32_t last,
                 tStatus& status) {
  std::string answer;
  const tContainer list(varmex_getItemContainer(session, kind, status));
  if (!list) return answer;
  varmex_ItemIterator position = varmex_ItemIterator_begin(list.get(), status);
  while (position != varmex_ItemIterator_end(list.get(), status) && status.code() == 0) {
    const tItem item(varmex_ItemIterator_nextItem(list.get(), &position, status));
    answer += attributes(item.get(), first, last);
  }
  return answer;
}

TEST_P(tSystemCallInjection, opening) {
  const tInstalledServiceLibrary service("full");
  for (const std::uint32_t flags : {0U, 1U}) {
    inject([=](tStatus& status) {
      const tItem session(varmex_openPXISession(flags, status));
      const tDeviceAddress address{0, 5, 0, 0};
      const tItem device(varmex_openDeviceByAddr(session.get(), &address, status));
      return std::string(device ? "device" : "none");
    });
  }
}

TEST_P(tSystemCallInjection, walking) {
  inject([](tStatus& status) {
    const tItem session(varmex_openPXISession(0, status));
    return attributes(session.get(), 0, 5) +
           walk(session.get(), varmex_container_Chassis, 4096, 4104, status) +
           walk(session.get(), varmex_container_Slots, 8192, 8206, status) +
           walk(session.get(), varmex_container_Devices, 12288, 12294, status);
  });
}

// Without the service library, or where it can't tell, the manager is native unless the list names
// it.
TEST_P(tSystemCallInjection, triggerManagers) {
  for (const char* variant : {"full", "withoutmode"}) {
    const tInstalledServiceLibrary service(variant, "mode 2");
    inject(
        [](tStatus& status) {
          const tItem session(varmex_openPXISession(0, status));
          const tItem chassis(varmex_openChassisByNumber(session.get(), 1, status));
          return std::to_string(
              varmex_getU32Attribute(chassis.get(), varmex_u32_IsTriggerManagerNative, status));
        },
        "1");
  }
}

// The system takes its time to close a watch: it is opened for this alone.
TEST_P(tSystemCallInjection, beginningToWait) {
  std::vector<tItem> sessions;
  for (int n = 0; n < 100; ++n) sessions.emplace_back(varmex_openPXISession(0, status_));
  inject([&](tStatus& status) {
    const tItem session = std::move(sessions.at(sessions.size() - 1));
    sessions.pop_back();
    return std::to_string(varmex_waitForSessionInvalidation(session.get(), 0, status));
  });
}

// Beside another session, so that the watch stays open.
TEST_P(tSystemCallInjection, waiting) {
  const tItem keeper(varmex_openPXISession(0, status_));
  ASSERT_EQ(varmex_waitForSessionInvalidation(keeper.get(), 0, status_), varmex_waitTimedOut);
  int round = 0;
  inject([&](tStatus& status) {
    const tItem session(varmex_openPXISession(0, status));
    const auto wait = [&](std::uint32_t timeout) {
      return std::to_string(varmex_waitForSessionInvalidation(session.get(), timeout, status));
    };
    std::string answer = wait(1);
    machine_.writePxiSys(kPxiSys + std::string(static_cast<std::size_t>(++round % 9 + 1), '\n'));
    answer += wait(20000);
    const tItem other(varmex_openPXISession(0, status));
    varmex_cancelWaitForInvalidation(other.get());
    return answer;
  });
}

TEST_P(tSystemCallInjection, routing) {
  int round = 0;
  inject([&](tStatus& status) {
    const std::string name = "5.0.0:7 " + std::to_string(round++);
    const tRoutingSession session(
        telmar_ra_varmex_createSession(name.c_str(), std::realloc, status));
    tText reply;
    telmar_ra_varmex_calculateRoute(session.get(), seed("PXI_Trig5", "t").c_str(),
                                    "[\"PXI_Trig5\"]", nullptr, &reply.text, status);
    return std::string(reply.text ? reply.text : "none");
  });
}

// Between which calls of the wait's the change comes does not matter.
TEST_F(tChangeAmidCalls, isSeen) {
  int round = 0;
  for (const char* name : {"stat", "lstat", "inotify_add_watch", "poll"}) {
    bool changed = true;
    for (int n = 1; changed; ++n) {
      session_.reset(varmex_openPXISession(0, status_));
      changed = false;
      int calls = 0;
      tSystemCalls hooks;
      hooks.before[name] = [&](const char*) {
        if (++calls < n || changed) return;
        changed = true;
        machine_.writePxiSys(kPxiSys +
                             std::string(static_cast<std::size_t>(++round % 9 + 1), '\n'));
      };
      const auto result = varmex_waitForSessionInvalidation(session_.get(), 300, status_);
      EXPECT_EQ(result, changed ? varmex_waitChanged : varmex_waitTimedOut)
          << name << ' ' << n << ' ' << status_.text();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(With, tSystemCallInjection, testing::ValuesIn(systemCalls()),
                         [](const auto& call) { return call.param.name; });

}  // namespace

}  // namespace test
