#include <atomic>

#include "tests/support/model.h"
#include "tests/support/routing.h"
#include "tests/support/serviceLibrary.h"
#include "tests/support/threads.h"
#include "varmex/varmex.hpp"

namespace test {

namespace {

using tConcurrency = tModel;

// Every chassis, slot, device and bridge of the session and all that they answer.
void readEverything(const varmex::Session& session) {
  for (std::uint32_t kind : {varmex_container_Chassis, varmex_container_Slots,
                             varmex_container_TriggerBridges, varmex_container_Devices}) {
    for (const varmex::Item& item : session.list(kind)) {
      const tItem twin(varmex_duplicate(item.handle(), nullptr));
      for (std::uint32_t attribute = kind; attribute < kind + 16; ++attribute) {
        varmex_getU32Attribute(twin.get(), attribute, nullptr);
        varmex_getStringAttribute(item.handle(), attribute, nullptr);
      }
    }
  }
}

// Of a description of which nothing has been worked out: one item, one session, and sessions of
// their own.
TEST_F(tConcurrency, threadsAskWhatNobodyAskedBefore) {
  const tInstalledServiceLibrary service("full", "mode 1");
  machine_.setRegistryText("SOFTWARE\\PXISA\\Services\\Trigger Managers\\T", "Library", "t.dll");
  machine_.writeConfiguration();
  std::string description = kRoutingDescription;
  description.insert(description.find("Vendor="), "TriggerManager=T\n");
  description += "PeripheralModuleOccupiedSlotList=9\n[Chassis1Slot9]\nX=";
  for (int round = 0; round < 30; ++round) {
    machine_.writePxieSys(description + std::to_string(round));
    const varmex::Session session;
    const varmex::Chassis rack = session.chassis(1);
    const varmex::Slot item = rack.slot(2);
    const varmex::Slot covered = rack.slot(9);
    std::vector<const char*> names(4);
    runInThreads(4, [&](int n) {
      EXPECT_EQ(covered.occupyingModuleSlot(), 4U);
      EXPECT_EQ(item.starTriggerLine(), 0U);
      EXPECT_EQ(item.dstarTriggerSet(), 0U);
      EXPECT_FALSE(rack.isTriggerManagerNative());
      EXPECT_EQ(rack.triggerManagerLibrary(), "t.dll");
      names[static_cast<std::size_t>(n)] =
          varmex_getStringAttribute(item.handle(), varmex_str_TriggerBusStableName, nullptr);
      readEverything(session);
      readEverything(varmex::Session());
    });
    for (const char* name : names) EXPECT_EQ(name, names[0]);
  }
}

TEST_F(tConcurrency, threadsReadARegistryThatChanges) {
  machine_.writePxieSys(kRoutingDescription);
  const varmex::Session session;
  std::atomic<bool> done{false};
  std::atomic<int> looks{0};
  const auto busName = [&] { return session.chassis(1).slot(3).triggerBusStableName(); };
  const std::string plain = "PXIChassis1TriggerBus1";
  const std::string stable = "PXIeChassis(S, V, M)/TriggerBus1";
  runInThreads(4, [&](int thread) {
    while (thread > 0 && !done) {
      const std::string name = busName();
      EXPECT_TRUE(name == plain || name == stable) << name;
      ++looks;
    }
    if (thread > 0) return;
    for (std::uint32_t n = 0; n < 12; ++n) {
      machine_.setRegistryNumber("SOFTWARE\\WOW6432Node\\Corvane\\COR-VARMEX",
                                 "PXITrigUseStableBusNameFormat", n % 2);
      EXPECT_EQ(busName(), n % 2 ? stable : plain);
      for (const int before = looks; looks < before + 3;) std::this_thread::yield();
    }
    done = true;
  });
}

}  // namespace

}  // namespace test
