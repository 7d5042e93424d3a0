#include <nlohmann/json.hpp>

#include "tests/support/model.h"

namespace test {

namespace {

class tSlot : public tModel {
 protected:
  // Slot 5 of a PXI Express chassis, with these lines in its section.
  tItem express(const std::string& lines) {
    describe("", "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\n[Chassis1Slot5]\n" + lines);
    return slot(1, 5);
  }
  tItem ofType(const std::string& type) { return express("SlotType=" + type + "\n"); }
  testing::AssertionResult refusedFor(std::uint32_t slotNumber, std::uint32_t type,
                                      const std::string& message, std::uint32_t bits) {
    nlohmann::ordered_json debug = {
        {"slotNumber", slotNumber}, {"slotType", type}, {"message", message}};
    if (bits) debug["expectedSlotType"] = bits;
    return notApplicable(debug.dump());
  }
};

constexpr const char* kClassic =
    "[Chassis3]\nVendor=V\nModel=M\nSlotList=1,2,3\n"
    "[Chassis3Slot1]\nPCISlotPath=x,y\nLocalBusRight=Slot2\n"
    "[Chassis3Slot2]\nPCISlotPath=78,F0\nPCISlotPathRootBus=010\nLocalBusLeft=Slot1\n"
    "[Chassis3Slot3]\nPCISlotPathRootBus=12x\n";

TEST_F(tSlot, typesOfTheExpressFile) {
  const std::pair<const char*, std::uint32_t> types[] = {
      {"PXI-1Slot", 1},           {"PXIePeripheralSlot", 2},  {"PXIeHybridSlot", 3},
      {"PXIeSystemSlot2Link", 4}, {"PXIeSystemSlot4Link", 4}, {"PXIeSystemTimingSlot", 34}};
  for (const auto& [name, type] : types) {
    EXPECT_EQ(number(ofType(name), varmex_u32_SlotType), type) << name;
  }
  EXPECT_EQ(status_.code(), 0);
  number(ofType("pxi-1slot"), varmex_u32_SlotType);
  EXPECT_TRUE(failed(-380757, "varmex_errorInformationNotAvailable",
                     inDebug(R"({"bad_slot_type":"pxi-1slot"})")));
  // What depends on the type is refused as it is.
  const tItem untyped = express("LocalBusLeft=Slot1\nPeripheralSlotLinkWidth1=8\n");
  for (const std::uint32_t attribute :
       {varmex_u32_SlotType, varmex_u32_PeripheralSlotLinkWidth1, varmex_u32_SystemSlotLinkOrigin1,
        varmex_u32_SystemSlotLinkCount, varmex_u32_PCISlotPathRootBus}) {
    number(untyped, attribute);
    EXPECT_TRUE(notFound("Section Chassis1Slot5 item: SlotType not found")) << attribute;
  }
  for (const std::uint32_t attribute : {varmex_str_PCISlotPath, varmex_str_LocalBusLeft,
                                        varmex_str_LocalBusRight, varmex_str_SystemSlotVendor}) {
    EXPECT_EQ(text(untyped, attribute), "<null>");
    EXPECT_TRUE(notFound("Section Chassis1Slot5 item: SlotType not found")) << attribute;
  }
}

TEST_F(tSlot, typesOfTheClassicFile) {
  describe(kClassic, "");
  EXPECT_EQ(listed(chassis(3), varmex_container_Slots, {varmex_u32_SlotType}), "8; 17; 1; ");
  describe(kClassic, "[Chassis3]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=\"\"\n");
  EXPECT_EQ(listed(chassis(3), varmex_container_Slots, {varmex_u32_SlotType}), "8; 1; 1; ");
}

TEST_F(tSlot, pathsOfClassicSlots) {
  describe(kClassic, "");
  text(slot(3, 1), varmex_str_PCISlotPath);
  EXPECT_TRUE(refusedFor(1, 8, "Only non-express PXI slots have slot paths", 1));
  EXPECT_EQ(text(slot(3, 2), varmex_str_PCISlotPath), "78,F0");
  EXPECT_EQ(number(slot(3, 2), varmex_u32_PCISlotPathRootBus), 8U);
  number(slot(3, 3), varmex_u32_PCISlotPathRootBus);
  EXPECT_TRUE(notFound("The value in section Chassis3Slot3 item PCISlotPathRootBus is invalid"));
}

TEST_F(tSlot, linksNeedThePeripheralBit) {
  const std::string links =
      "PeripheralSlotLinkWidth1=8\nPeripheralSlotLinkWidth2=1\nSystemSlotLinkOrigin1=2\n"
      "SystemSlotLinkOrigin2=x\n";
  const tItem timing = express("SlotType=PXIeSystemTimingSlot\n" + links);
  EXPECT_EQ(
      numbers(timing, {varmex_u32_PeripheralSlotLinkWidth1, varmex_u32_PeripheralSlotLinkWidth2,
                       varmex_u32_SystemSlotLinkOrigin1}),
      "8 1 2");
  EXPECT_EQ(status_.code(), 0);
  number(timing, varmex_u32_SystemSlotLinkOrigin2);
  EXPECT_TRUE(notFound("The value in section Chassis1Slot5 item SystemSlotLinkOrigin2 is invalid"));
  const tItem system = express("SlotType=PXIeSystemSlot4Link\nVendor=W\n" + links);
  for (std::uint32_t attribute = 8193; attribute <= 8196; ++attribute) {
    number(system, attribute);
    EXPECT_TRUE(refusedFor(5, 4, "This attribute requires a PXIe slot", 2)) << attribute;
  }
  EXPECT_EQ(number(system, varmex_u32_SystemSlotLinkCount), 4U);
  EXPECT_EQ(text(system, varmex_str_SystemSlotVendor), "W");
  text(system, varmex_str_SystemSlotModel);
  EXPECT_TRUE(notFound("Section Chassis1Slot5 item: Model not found"));
  EXPECT_EQ(number(ofType("PXIeSystemSlot2Link"), varmex_u32_SystemSlotLinkCount), 2U);
  const tItem hybrid = ofType("PXIeHybridSlot");
  number(hybrid, varmex_u32_SystemSlotLinkCount);
  EXPECT_TRUE(refusedFor(5, 3, "Number of links requires a PXIe system slot", 4));
  text(hybrid, varmex_str_SystemSlotInstanceName);
  EXPECT_TRUE(refusedFor(5, 3, "For the Slot class, only valid for System Slots", 4));
}

TEST_F(tSlot, localBuses) {
  const std::string older =
      " is not populated for this slot, this pxiesys.ini file may have come from an older resource "
      "manager";
  const tItem system = express("SlotType=PXIeSystemSlot2Link\nLocalBusRight=Slot2\n");
  EXPECT_EQ(text(system, varmex_str_LocalBusRight), "Slot2");
  text(system, varmex_str_LocalBusLeft);
  EXPECT_TRUE(refusedFor(5, 4, "System slots do not have a LocalBusLeft.", 0));
  const tItem hybrid = express("SlotType=PXIeHybridSlot\nLocalBusLeft=None\n");
  EXPECT_EQ(text(hybrid, varmex_str_LocalBusLeft), "None");
  text(hybrid, varmex_str_LocalBusRight);
  EXPECT_TRUE(refusedFor(5, 3, "LocalBusRight" + older, 0));
  describe(kClassic, "");
  EXPECT_EQ(text(slot(3, 1), varmex_str_LocalBusRight), "Slot2");
  EXPECT_EQ(text(slot(3, 2), varmex_str_LocalBusLeft), "Slot1");
  text(slot(3, 2), varmex_str_LocalBusRight);
  EXPECT_TRUE(notFound("Section Chassis3Slot2 item: LocalBusRight not found"));
}

TEST_F(tSlot, modulesMayCoverSeveralSlots) {
  describe("[Chassis1Slot3]\nX=1\n",
           "[Chassis1]\nSlotList=2,3,4,5\nVendor=V\nModel=M\nSerialNumber=S\n"
           "[Chassis1Slot2]\nAddressInfo=PXI0::1-2.0::INSTR\n"
           "[Chassis1Slot4]\nPeripheralModuleOccupiedSlotList=3,4\n[Chassis1Slot5]\nX=1\n");
  for (const auto& [number, module] : {std::pair{2U, 2U}, {3U, 4U}, {4U, 4U}}) {
    EXPECT_EQ(this->number(slot(1, number), varmex_u32_OccupyingModuleSlot), module);
  }
  const auto expectEmpty = [this](const tItem& item) {
    number(item, varmex_u32_OccupyingModuleSlot);
    EXPECT_TRUE(failed(-380757, "varmex_errorInformationNotAvailable",
                       inDebug(R"({"message":"There is no device occupying this slot"})")));
  };
  const tItem empty = slot(1, 5);
  expectEmpty(empty);
  expectEmpty(empty);
  expectEmpty(express("AddressInfo=PXI0::1-2.0::INSTR\n"));  // of a chassis without a list
}

// What could not be searched is searched again, and slots that need no search are not concerned.
TEST_F(tSlot, modulesBehindAMalformedList) {
  const struct {
    const char* list;
    const char* occupied;
    const char* message;
  } cases[] = {{"2,x", "5", "The number list in section Chassis1 item SlotList is invalid."},
               {"2,4", "5,x",
                "The number list in section Chassis1Slot4 item PeripheralModuleOccupiedSlotList is "
                "invalid."}};
  for (const auto& [list, occupied, message] : cases) {
    describe("", std::string("[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=") + list +
                     "\n[Chassis1Slot2]\nAddressInfo=PXI0::1-2.0::INSTR\n[Chassis1Slot4]\n"
                     "PeripheralModuleOccupiedSlotList=" +
                     occupied + "\n[Chassis1Slot5]\nX=1\n");
    EXPECT_EQ(number(slot(1, 2), varmex_u32_OccupyingModuleSlot), 2U);
    const tItem item = slot(1, 5);
    for (int time = 0; time < 2; ++time) {
      number(item, varmex_u32_OccupyingModuleSlot);
      EXPECT_TRUE(notFound(message)) << message;
    }
  }
}

TEST_F(tSlot, knowsItsPlace) {
  describe(kClassic, "");
  const tItem item = slot(3, 2);
  EXPECT_EQ(numbers(item, {varmex_u32_ItemType, varmex_u32_ChassisNumber, varmex_u32_SlotNumber}),
            "2 3 2");
  const tItem owner(varmex_openContainingItem(item.get(), varmex_itemType_Chassis, status_));
  EXPECT_EQ(number(owner, varmex_u32_ItemType), 1U);
  EXPECT_FALSE(varmex_openContainingItem(item.get(), varmex_itemType_Slot, status_));
  EXPECT_TRUE(failed(-380755, "varmex_errorInvalidParameter",
                     inDebug(R"({"message":"You cannot get the containing item for a chassis"})")));
  EXPECT_FALSE(slot(3, 99));
  EXPECT_TRUE(
      failed(-380751, "varmex_errorUnknownItem", R"({"type":"slot","slotNum":99,"chassisNum":3})"));
  number(item, 8206);
  EXPECT_TRUE(notApplicable(R"({"attribute":8206})"));
  text(item, 8205);
  EXPECT_TRUE(notApplicable(R"({"attribute":8205})"));
  const tItem copy(varmex_duplicate(item.get(), status_));
  EXPECT_EQ(text(copy, varmex_str_PCISlotPath), "78,F0");
}

}  // namespace

}  // namespace test
