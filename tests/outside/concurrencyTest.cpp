#include <atomic>

#include "tests/support/model.h"
#include "tests/support/routing.h"
#include "tests/support/serviceLibrary.h"
#include "tests/support/threads.h"

namespace test {

namespace {

using tConcurrency = tModel;

// Every chassis, slot, device and bridge of the session and all that they answer.
void readEverything(varmex_Item* session) {
  tStatus status;
  for (std::uint32_t kind : {varmex_container_Chassis, varmex_container_Slots,
                             varmex_container_TriggerBridges, varmex_container_Devices}) {
    const tContainer list(varmex_getItemContainer(session, kind, status));
    ASSERT_TRUE(list) << status.text();
    const tContainer copy(varmex_duplicateItemContainer(list.get(), status));
    varmex_ItemIterator position = 0;
    while (position != varmex_ItemIterator_end(copy.get(), status)) {
      const tItem item(varmex_ItemIterator_nextItem(copy.get(), &position, status));
      const tItem twin(varmex_duplicate(item.get(), status));
      for (std::uint32_t attribute = kind; attribute < kind + 16; ++attribute) {
        varmex_getU32Attribute(twin.get(), attribute, nullptr);
        varmex_getStringAttribute(item.get(), attribute, nullptr);
      }
    }
    EXPECT_EQ(status.code(), 0) << status.text();
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
    describe("", description + std::to_string(round));
    const tItem rack = chassis(1);
    const tItem item = slot(1, 2);
    const tItem covered = slot(1, 9);
    std::vector<const char*> names(4);
    runInThreads(4, [&](int n) {
      tStatus status;
      EXPECT_EQ(varmex_getU32Attribute(covered.get(), varmex_u32_OccupyingModuleSlot, status), 4U);
      EXPECT_EQ(varmex_getU32Attribute(item.get(), varmex_u32_StarTriggerLine, status), 0U);
      EXPECT_EQ(varmex_getU32Attribute(item.get(), varmex_u32_DStarTriggerSet, status), 0U);
      EXPECT_EQ(varmex_getU32Attribute(rack.get(), varmex_u32_IsTriggerManagerNative, status), 0U);
      EXPECT_STREQ(
          varmex_getStringAttribute(rack.get(), varmex_str_ChassisTriggerManagerLibrary, status),
          "t.dll");
      names[static_cast<std::size_t>(n)] =
          varmex_getStringAttribute(item.get(), varmex_str_TriggerBusStableName, status);
      readEverything(session_.get());
      const tItem own(varmex_openPXISession(0, status));
      ASSERT_EQ(status.code(), 0) << status.text();
      readEverything(own.get());
    });
    for (const char* name : names) EXPECT_EQ(name, names[0]);
  }
}

TEST_F(tConcurrency, threadsReadARegistryThatChanges) {
  describe("", kRoutingDescription);
  std::atomic<bool> done{false};
  std::atomic<int> looks{0};
  const auto busName = [this] {
    tStatus status;
    const tItem owner(varmex_openChassisByNumber(session_.get(), 1, status));
    const tItem item(varmex_openSlotByNumber(owner.get(), 3, status));
    const char* const name =
        varmex_getStringAttribute(item.get(), varmex_str_TriggerBusStableName, status);
    return std::string(name ? name : "") + status.text();
  };
  const std::string plain = "PXIChassis1TriggerBus1{}";
  const std::string stable = "PXIeChassis(S, V, M)/TriggerBus1{}";
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
