#include "tests/support/model.h"

namespace test {

namespace {

class tContainers : public tModel {
 protected:
  void SetUp() override {
    describe(
        "[System]\nChassisList=3,1\n"
        "[Chassis1]\nVendor=V\nModel=M\nSlotList=4,2\n[Chassis1Slot4]\nPCIBusNumber=9\n"
        "PCIDeviceNumber=1\n[Chassis1Slot2]\nX=1\n"
        "[Chassis3]\nVendor=V\nModel=M\nSlotList=2\n[Chassis3Slot2]\nPCISlotPath=a,b\n",
        "[System]\nChassisList=2,1\n"
        "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=3,4\n[Chassis1Slot3]\n"
        "AddressInfo=PXI0::9-0.1::INSTR;PXI0::9-0.0::INSTR\n"
        "[Chassis2]\nVendor=V\nModel=M\nSerialNumber=T\nSlotList=\"\"\n");
    ASSERT_TRUE(session_) << status_.text();
  }
};

TEST_F(tContainers, listInOrder) {
  EXPECT_EQ(listed(session_, varmex_container_Chassis, {varmex_u32_ChassisNumber}), "1; 2; 3; ");
  EXPECT_EQ(listed(session_, varmex_container_Slots, {varmex_u32_SlotNumber}), "2; 3; 4; 2; ");
  EXPECT_EQ(listed(chassis(1), varmex_container_Slots, {varmex_u32_SlotNumber}), "2; 3; 4; ");
  EXPECT_EQ(listed(session_, varmex_container_Devices, {varmex_u32_DeviceFunction}), "0; 1; 0; ");
  EXPECT_EQ(listed(slot(1, 3), varmex_container_Devices, {varmex_u32_SlotNumber}), "3; 3; ");
  EXPECT_TRUE(items(chassis(2), varmex_container_TriggerBridges).empty());
  EXPECT_EQ(status_.code(), 0) << status_.text();
}

// A device of the first slot is in no device map, so that it may stand in another slot, too. Those
// in between come in the opposite order, a few or so many that they are sorted.
TEST_F(tContainers, listADeviceWhereItIsFirstMet) {
  for (const int between : {1, 100}) {
    std::string numbers = "1";
    std::string slots;
    std::string expected;
    const auto add = [&](int slot, int bus) {
      const std::string number = std::to_string(slot);
      numbers += ',' + number;
      slots += "[Chassis1Slot" + number +
               "]\nPCISlotPath=a,b\nPCIDeviceNumber=1\nPCIBusNumber=" + std::to_string(bus) + '\n';
      return std::to_string(bus) + ' ' + number + "; ";
    };
    const std::string first = add(1, 900);
    for (int slot = 2; slot < 2 + between; ++slot) expected.insert(0, add(slot, 800 - slot));
    add(2 + between, 900);
    describe("[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSlotList=" + numbers + '\n' +
                 slots,
             "");
    EXPECT_EQ(
        listed(session_, varmex_container_Devices, {varmex_u32_DeviceBus, varmex_u32_SlotNumber}),
        expected + first);
  }
}

TEST_F(tContainers, refuseWhatAnItemDoesNotHold) {
  const tItem item = slot(1, 3);
  EXPECT_FALSE(container(item, varmex_container_Chassis));
  EXPECT_TRUE(failed(-380756, "varmex_errorAttributeNotApplicable"));
  EXPECT_FALSE(container(item, 0xFFFFFFFF));
  EXPECT_TRUE(notApplicable(R"({"attr":4294967295})"));
  EXPECT_FALSE(container(chassis(1), varmex_container_Chassis));
  EXPECT_TRUE(failed(-380756, "varmex_errorAttributeNotApplicable"));
}

TEST_F(tContainers, areWalkedByPosition) {
  const tContainer list = container(session_, varmex_container_Chassis);
  EXPECT_EQ(varmex_ItemIterator_begin(list.get(), status_), 0U);
  EXPECT_EQ(varmex_ItemIterator_end(list.get(), status_), 3U);
  const std::string past = inDebug(R"({"message":"attempted iteration past end of container"})");
  for (varmex_ItemIterator position : {varmex_ItemIterator{3}, ~varmex_ItemIterator{0}}) {
    const varmex_ItemIterator before = position;
    EXPECT_FALSE(varmex_ItemIterator_nextItem(list.get(), &position, status_));
    EXPECT_TRUE(failed(-380760, "varmex_errorIterationFailure", past));
    EXPECT_EQ(position, before);
  }
  EXPECT_FALSE(varmex_ItemIterator_nextItem(nullptr, nullptr, status_));
  EXPECT_TRUE(failed(-380755, "varmex_errorInvalidParameter",
                     inDebug(R"({"message":"ItemIterator pointer cannot be null!"})")));
  varmex_ItemIterator position = 0;
  EXPECT_FALSE(varmex_ItemIterator_nextItem(nullptr, &position, status_));
  EXPECT_TRUE(failed(-380752, "varmex_errorInvalidHandle"));
  EXPECT_EQ(varmex_ItemIterator_end(nullptr, status_), 0U);
  EXPECT_TRUE(failed(-380752, "varmex_errorInvalidHandle"));
}

TEST_F(tContainers, outliveTheirCopiesAndAreOutlivedByItems) {
  tContainer list = container(session_, varmex_container_Slots);
  tContainer copy(varmex_duplicateItemContainer(list.get(), status_));
  list.reset();
  varmex_ItemIterator position = 1;
  const tItem item(varmex_ItemIterator_nextItem(copy.get(), &position, status_));
  copy.reset();
  EXPECT_EQ(number(item, varmex_u32_SlotNumber), 3U);
  EXPECT_EQ(position, 2U);
  EXPECT_FALSE(varmex_duplicateItemContainer(nullptr, status_));
  EXPECT_TRUE(failed(-380752, "varmex_errorInvalidHandle"));
}

TEST_F(tContainers, oneBadNumberEndsTheWalk) {
  describe(
      "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSlotList=2,8\n"
      "[Chassis1Slot2]\nPCISlotPath=a,b\n",
      "[A]\nX=1\n");
  EXPECT_FALSE(container(session_, varmex_container_Chassis));
  EXPECT_TRUE(
      failed(-380751, "varmex_errorUnknownItem", R"({"type":"slot","slotNum":8,"chassisNum":1})"));
}

}  // namespace

}  // namespace test
