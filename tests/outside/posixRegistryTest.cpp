// Names that are worked out while the registry can't be read, and forks while they are; functions
// of libraries that the service library links to.

#include <atomic>

#include "tests/support/posix/host.h"
#include "tests/support/routing.h"
#include "tests/support/serviceLibrary.h"
#include "tests/support/wait.h"

namespace test {

namespace {

constexpr const char* kNameForNow = "PXIChassis1TriggerBus1";
constexpr const char* kName = "PXIeChassis(S, V, M)/TriggerBus1";

class tRegistryMoment : public tWaiting {
 protected:
  void SetUp() override {
    describe("", kRoutingDescription);
    machine_.setRegistryNumber("SOFTWARE\\WOW6432Node\\Corvane\\COR-VARMEX",
                               "PXITrigUseStableBusNameFormat", 1);
  }

  // While the registry fails to be read.
  void disturbed(const std::function<void()>& act) const {
    const std::filesystem::path file = machine_.folder() / "registry.reg";
    const std::filesystem::path aside = machine_.folder() / "aside";
    std::filesystem::rename(file, aside);
    std::filesystem::create_symlink("/proc/self/mem", file);
    act();
    std::filesystem::rename(aside, file);
  }

  tRoutingSession open(const char* device) { return openRouting(device, status_); }

  const char* busName(const tRoutingSession& session) {
    const tIterator first(telmar_ra_varmex_getAllTerminals(session.get(), status_));
    return telmar_ra_varmex_TerminalIterator_getStringAttribute(first.get(), "busName", status_);
  }
};

TEST_F(tRegistryMoment, aSlotKeepsNoNameOfIt) {
  const tItem item = slot(1, 2);
  const auto ask = [&] {
    return varmex_getStringAttribute(item.get(), varmex_str_TriggerBusStableName, status_);
  };
  const char* forNow = nullptr;
  disturbed([&] {
    forNow = ask();
    EXPECT_STREQ(forNow, kNameForNow);
    EXPECT_EQ(ask(), forNow) << "costs nothing more, however often it is asked for";
  });
  EXPECT_STREQ(ask(), kName);
  EXPECT_STREQ(forNow, kNameForNow) << "texts live as long as their item";
  disturbed([&] { EXPECT_STREQ(ask(), kName); });
}

TEST_F(tRegistryMoment, aRoutingDeviceKeepsNoNameOfIt) {
  constexpr const char* kDevice = "5.0.0:1 of a moment";
  tRoutingSession session;
  disturbed([&] {
    session = open(kDevice);
    EXPECT_STREQ(busName(session), kNameForNow);
    open(kDevice);
  });
  const char* const forNow = busName(session);
  EXPECT_STREQ(forNow, kNameForNow);
  machine_.writePxieSys("");
  open(kDevice);
  EXPECT_STREQ(busName(session), kNameForNow) << "another look that fails changes nothing";
  machine_.writePxieSys(kRoutingDescription);
  EXPECT_STREQ(busName(open(kDevice)), kName);
  EXPECT_STREQ(busName(session), kName);
  EXPECT_STREQ(forNow, kNameForNow) << "texts live as long as their device";
  disturbed([&] { EXPECT_STREQ(busName(open(kDevice)), kName); });
}

// A thread that makes a device holds their lock: to the child it is taken for good.
TEST_F(tRegistryMoment, aForkWhileADeviceIsMadeLeavesAChildThatMakesOthers) {
  machine_.writeConfiguration();
  const tRoutingSession known = open("7.0.0:1 known");
  std::jthread maker;  // ends behind the lock
  const tExclusiveLock delay(machine_.configuration());
  maker = std::jthread([] { openRouting("5.0.0:1 amid", nullptr); });
  settle();
  inChild([&] {
    const auto root = machine_.folder() / "child";
    tTestMachine::write(root / "etc/pxi/pxiesys.ini", kRoutingDescription);
    setenv("VARMEX_FSROOT", root.c_str(), 1);
    EXPECT_EQ(busName(open("7.0.0:1 known")), busName(known));
    for (const char* name : {"5.0.0:1 amid", "6.0.0:1 new"}) {
      const char* const text = busName(open(name));
      EXPECT_EQ(busName(open(name)), text);
    }
  });
}

std::atomic<bool> isDelivering{false}, mayDeliver{false};

void* deliverLate(void* existing, std::size_t size) {
  isDelivering = true;
  isDelivering.notify_one();
  mayDeliver.wait(false);
  return std::realloc(existing, size);
}

// A thread of the parent is lost amid a calculation on a session that holds a terminal.
TEST_F(tRegistryMoment, aForkAmidACalculationLeavesASessionThatBeginsAnew) {
  const auto calculate = [](const tRoutingSession& session, const char* token) {
    return route(session, "PXI_Trig5", token, nullptr);
  };
  const tRoutingSession other = open("5.0.0:1 forked");
  const tRoutingSession session(
      telmar_ra_varmex_createSession("5.0.0:1 forked", deliverLate, status_));
  mayDeliver = true;
  const std::string first = calculate(session, "a");
  telmar_ra_varmex_reserveRoute(session.get(), 1, nullptr, status_);
  ASSERT_EQ(status_.code(), 0) << first << status_.text();
  EXPECT_EQ(calculate(other, "b"), "[]");
  isDelivering = mayDeliver = false;
  const std::jthread lost(calculate, std::cref(session), "a");
  isDelivering.wait(false);
  inChild([&] {
    mayDeliver = true;
    telmar_ra_varmex_programRoute(session.get(), 1, status_);
    EXPECT_EQ(status_.code(), -313325) << status_.text();
    EXPECT_NE(calculate(other, "b"), "[]") << "it holds nothing";
    EXPECT_EQ(calculate(session, "a"), first) << "from the first ticket on";
  });
  mayDeliver = true;
  mayDeliver.notify_one();
}

using tLinkedService = tModel;

TEST_F(tLinkedService, functionsOfLibrariesBehindItDoNotCount) {
  describe("", "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nTriggerManager=T\n");
  for (const auto& [variant, expected] : {std::pair{"full", 0U}, {"withlinkedmode", 1U}}) {
    const tInstalledServiceLibrary service(variant, "mode 2");
    EXPECT_EQ(number(chassis(1), varmex_u32_IsTriggerManagerNative), expected) << variant;
    EXPECT_EQ(service.takeCalls().find("<mode") == std::string::npos, expected == 1U) << variant;
    EXPECT_EQ(status_.code(), 0) << status_.text();
  }
}

}  // namespace

}  // namespace test
