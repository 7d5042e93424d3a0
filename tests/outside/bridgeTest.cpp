#include <stdexcept>

#include "tests/support/model.h"

namespace test {

namespace {

class tBridge : public tModel {
 protected:
  // Bridge 2 of chassis 1, with these lines of pxisys.ini behind its section's name.
  tItem bridge(const std::string& lines, const std::string& pxieSys = "") {
    describe(
        "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nTriggerBridgeList=2\n"
        "SlotList=2\n[Chassis1Slot2]\nPCISlotPath=a,b\n[Chassis1TriggerBridge2]\n" +
            lines,
        pxieSys);
    auto list = items(session_, varmex_container_TriggerBridges);
    return list.empty() ? tItem() : std::move(list.front());
  }
};

TEST_F(tBridge, mapsLines) {
  const tItem item = bridge(
      "LineMappingSpec=0x2\nSourceTriggerBus=010\nDestinationTriggerBus=3\n"
      "[Chassis1LineMappingSpec2]\nPXI_TRIG0=\"\"\nPXI_TRIG1=1,1\nPXI_TRIG2 =\n"
      "PXI_TRIG3=0,2,7\nPXI_TRIG4=-1\nPXI_TRIG5=9\nPXI_TRIG6=8\nPXI_TRIG7=abc\n");
  ASSERT_TRUE(item) << status_.text();
  EXPECT_EQ(numbers(item, {varmex_u32_ItemType, varmex_u32_ChassisNumber, varmex_u32_BridgeNumber,
                           varmex_u32_BridgeSourceTriggerBus,
                           varmex_u32_BridgeDestinationTriggerBus, varmex_u32_BridgeLineMapping0,
                           varmex_u32_BridgeLineMapping1, varmex_u32_BridgeLineMapping3}),
            "4 1 2 8 3 0 2 133");
  EXPECT_EQ(status_.code(), 0);
  number(item, varmex_u32_BridgeLineMapping2);
  EXPECT_TRUE(notFound("Section Chassis1LineMappingSpec2 item: PXI_TRIG2 not found"));
  for (const auto& [line, destination] : {std::pair{4U, -1}, {5U, 9}}) {
    number(item, varmex_u32_BridgeLineMapping0 + line);
    EXPECT_TRUE(failed(-380753, "varmex_errorInformationConflict",
                       inDebug(R"({"attribute":"PXI_TRIG)" + std::to_string(line) +
                               R"(","destinationLine":)" + std::to_string(destination) + "}")));
  }
  try {
    number(item, varmex_u32_BridgeLineMapping6);
    ADD_FAILURE() << "line 8 lies on the bound";
  } catch (const std::out_of_range& exception) {
    EXPECT_STREQ(exception.what(), "invalid bitset<N> position");
  }
  EXPECT_EQ(status_.code(), 0);
  number(item, varmex_u32_BridgeLineMapping7);
  EXPECT_TRUE(
      notFound("The number list in section Chassis1LineMappingSpec2 item PXI_TRIG7 is invalid."));
  for (std::uint32_t attribute : {16383U, 16395U}) {
    number(item, attribute);
    EXPECT_TRUE(notApplicable(R"({"attribute":)" + std::to_string(attribute) + "}"));
  }
  text(item, 16384);
  EXPECT_TRUE(notApplicable(R"({"attribute":16384})"));
}

TEST_F(tBridge, readsTheClassicFileFirst) {
  const tItem item = bridge("LineMappingSpec=1\n",
                            "[Chassis1TriggerBridge2]\nSourceTriggerBus=1\n"
                            "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\n"
                            "[Chassis1LineMappingSpec1]\nPXI_TRIG0=5\n");
  ASSERT_TRUE(item) << status_.text();
  EXPECT_EQ(number(item, varmex_u32_BridgeLineMapping0), 32U);
  number(item, varmex_u32_BridgeSourceTriggerBus);
  EXPECT_TRUE(notFound("Section Chassis1TriggerBridge2 item: SourceTriggerBus not found"));
  const tItem inBoth = bridge("LineMappingSpec=1\n[Chassis1LineMappingSpec1]\nPXI_TRIG0=1\n",
                              "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\n"
                              "[Chassis1LineMappingSpec1]\nPXI_TRIG0=5\n");
  EXPECT_EQ(number(inBoth, varmex_u32_BridgeLineMapping0), 2U);
  const tItem unmapped = bridge("LineMappingSpec=9\n", "[A]\nB=1\n");
  number(unmapped, varmex_u32_BridgeLineMapping7);
  EXPECT_TRUE(
      failed(-380757, "varmex_errorInformationNotAvailable",
             inDebug(R"({"itemName":"PXI_TRIG7","mappingSection_":"Chassis1LineMappingSpec9"})")));
}

TEST_F(tBridge, cannotBeOpenedFromTheExpressFileAlone) {
  const std::string express =
      "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=\"\"\n"
      "TriggerBridgeList=2\n";
  describe("", express + "[Chassis1TriggerBridge2]\nLineMappingSpec=1\n");
  EXPECT_TRUE(items(session_, varmex_container_TriggerBridges).empty());
  EXPECT_TRUE(notFound("Section Chassis1TriggerBridge2 item: LineMappingSpec not found"));
  describe("", express);
  EXPECT_TRUE(items(session_, varmex_container_TriggerBridges).empty());
  EXPECT_TRUE(failed(-380751, "varmex_errorUnknownItem",
                     R"({"type":"triggerBridge","bridgeNum":2,"chassisNum":1})"));
}

TEST_F(tBridge, areListedByChassisAndNumber) {
  const auto describeWith = [this](const std::string& listOfFirst, const std::string& bridges) {
    const std::string chassis = "\nVendor=V\nModel=M\nSlotList=\"\"\nTriggerBridgeList=";
    describe(
        "[System]\nChassisList=2,1\n[Chassis1Slot2]\nPCISlotPath=a,b\n[Chassis2Slot2]\n"
        "PCISlotPath=b,c\n[Chassis1]" +
            chassis + listOfFirst + "\n[Chassis2]" + chassis + "9,1\n" + bridges,
        "");
  };
  std::string sections;
  for (const std::string bridge :
       {"2TriggerBridge9", "2TriggerBridge1", "1TriggerBridge3", "1TriggerBridge2"}) {
    sections +=
        "[Chassis" + bridge + "]\nLineMappingSpec=1\nSourceTriggerBus=" + bridge.back() + '\n';
  }
  describeWith("3,2,3", sections);
  EXPECT_EQ(listed(session_, varmex_container_TriggerBridges,
                   {varmex_u32_ChassisNumber, varmex_u32_BridgeNumber,
                    varmex_u32_BridgeSourceTriggerBus}),
            "1 2 2; 1 3 3; 2 1 1; 2 9 9; ");
  for (const char* list : {"2,x", "x"}) {
    describeWith(list, sections);
    EXPECT_TRUE(items(session_, varmex_container_TriggerBridges).empty()) << list;
    EXPECT_TRUE(notFound("The number list in section Chassis1 item TriggerBridgeList is invalid."))
        << list;
  }
}

TEST_F(tBridge, liesInItsChassis) {
  const tItem item = bridge("LineMappingSpec=1\n");
  const tItem owner(varmex_openContainingItem(item.get(), 1, status_));
  EXPECT_EQ(number(owner, varmex_u32_ItemType), 1U);
  EXPECT_FALSE(varmex_openContainingItem(item.get(), 2, status_));
  EXPECT_EQ(status_.code(), -380755);
}

}  // namespace

}  // namespace test
