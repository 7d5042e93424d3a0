#include "tests/support/model.h"

namespace test {

namespace {

class tDevices : public tModel {
 protected:
  std::string devicesOf(const tItem& item) {
    return listed(item, varmex_container_Devices,
                  {varmex_u32_DeviceBus, varmex_u32_DeviceNumber, varmex_u32_DeviceFunction});
  }
  std::string addressInfo(const std::string& text) {
    describe("",
             "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\n"
             "SlotList=1,2\n[Chassis1Slot1]\nX=1\n[Chassis1Slot2]\nAddressInfo=" +
                 text + "\n");
    return devicesOf(slot(1, 2));
  }
  std::string functions(const std::string& sections, std::uint32_t slotNumber = 3) {
    describe(
        "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSlotList=1,2,3,4\n"
        "[Chassis1Slot2]\nPCISlotPath=a,b\n" +
            sections,
        "");
    return session_ ? devicesOf(slot(1, slotNumber)) : "";
  }
};

TEST_F(tDevices, resourceNames) {
  const std::pair<const char*, const char*> cases[] = {
      {"PXI0::5-3.1::INSTR", "5 3 1; "},
      {"PXI5::3::1::INSTR", "5 3 1; "},
      {"PXI1::2-3.0::INSTR;PXI1::2-3.1::INSTR+PXI1::2-4.0::INSTR", "2 3 0; 2 3 1; 2 4 0; "},
      {";+PXI1::2-3.0::INSTR+;+;PXI1::2-3.0::INSTR;;", "2 3 0; "},
      {"PXI1::3-4.0::INSTR+VISA::x;PXI2::5::6::INSTR", "2 5 6; 3 4 0; "},
      {"PXI 1:: 2- 3.x::INSTR;PXI1::2-3.0::instr;PXI0::5-3::INSTR;::INSTR", ""},
      {"PXI 7::2-3.4 junk::INSTR", "2 3 4; "}};
  for (const auto& [text, devices] : cases) EXPECT_EQ(addressInfo(text), devices);
  EXPECT_EQ(status_.code(), 0);
}

TEST_F(tDevices, functionTrees) {
  EXPECT_EQ(functions("[Chassis1Slot3]\nPCIBusNumber=4\nPCIDeviceNumber=2\n"), "4 2 0; ");
  EXPECT_EQ(functions("[Chassis1Slot3]\nPCIBusNumber=4\n"), "");
  EXPECT_EQ(functions("[Chassis1Slot3]\nFunctionList=1,0,7\nPCIBusNumber=4\nPCIDeviceNumber=2\n"
                      "[Chassis1Slot3Function0]\nPCIBusNumber=None\nPCIDeviceNumber=3\n"
                      "DeviceList=3,5\n"
                      "[Chassis1Slot3Function1]\nPCIBusNumber=9\nPCIDeviceNumber=9\n"
                      "[Chassis1Slot3Function0Device3]\nFunctionList=1\n"
                      "[Chassis1Slot3Function0Device3Function1]\nPCIBusNumber=5\n"
                      "PCIDeviceNumber=3\n"
                      "[Chassis1Slot3Function0Device5]\nFunctionList=0\n"),
            "5 3 1; 9 9 1; ");
  EXPECT_EQ(status_.code(), 0);
  EXPECT_EQ(functions("[Chassis1Slot1]\nPCIBusNumber=0\nPCIDeviceNumber=2\n", 1), "0 2 0; ");
  EXPECT_FALSE(device(0, 2, 0)) << "slot 1 of a classic chassis is not in the map";
}

TEST_F(tDevices, brokenFunctionTrees) {
  functions("[Chassis1Slot3]\nPCIBusNumber=none\nPCIDeviceNumber=2\n");
  EXPECT_TRUE(notFound("The value in section Chassis1Slot3 item PCIBusNumber is invalid"));
  functions("[Chassis1Slot3]\nFunctionList=0\n[Chassis1Slot3Function0]\nDeviceList=3\n");
  EXPECT_TRUE(notFound("Section Chassis1Slot3Function0Device3 item: FunctionList not found"));
}

TEST_F(tDevices, answerForTheirModule) {
  describe(
      "[System]\nChassisList=1\n[Chassis1]\nSlotList=3\n"
      "[Chassis1Slot3]\nPCIBusNumber=4\nPCIDeviceNumber=2\n",
      "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=2\n"
      "[Chassis1Slot2]\nAddressInfo=PXI0::5-3.1::INSTR\nVendor=W\nModel=D\nInstanceName=I\n"
      "PeripheralModuleOccupiedSlotList=2,3\nPeripheralModuleLinkWidthMax=8\n"
      "PeripheralModuleLinkWidthNegotiated=x\n");
  const tItem express = device(5, 3, 7);
  ASSERT_TRUE(express) << status_.text();
  EXPECT_EQ(numbers(express, {varmex_u32_ItemType, varmex_u32_ChassisNumber, varmex_u32_SlotNumber,
                              varmex_u32_DeviceFunction, varmex_u32_DeviceIsExpress,
                              varmex_u32_PeripheralModuleLinkWidthMax}),
            "3 1 2 7 1 8");
  EXPECT_EQ(texts(express, {varmex_str_DeviceVendor, varmex_str_DeviceModel,
                            varmex_str_DeviceInstanceName, varmex_str_DeviceAddressInfo,
                            varmex_str_PeripheralModuleOccupiedSlotList, varmex_str_DeviceName}),
            "W|D|I|PXI0::5-3.1::INSTR|2,3|PXI1Slot2");
  number(express, varmex_u32_PeripheralModuleLinkWidthNegotiated);
  EXPECT_TRUE(
      notFound("The value in section Chassis1Slot2 item "
               "PeripheralModuleLinkWidthNegotiated is invalid"));
  number(express, 12294);
  EXPECT_TRUE(notApplicable(R"({"attribute":12294})"));
  const tItem classic = device(4, 2, 0);
  EXPECT_EQ(number(classic, varmex_u32_DeviceIsExpress), 0U);
  EXPECT_EQ(text(classic, varmex_str_DeviceName), "PXI1Slot3");
  const std::string refusal = R"({"message":"cannot query attribute on non express device"})";
  text(classic, varmex_str_DeviceVendor);
  EXPECT_TRUE(notApplicable(refusal));
  number(classic, varmex_u32_PeripheralModuleLinkWidthMax);
  EXPECT_TRUE(notApplicable(refusal));
  const tItem owner(varmex_openContainingItem(classic.get(), varmex_itemType_Slot, status_));
  EXPECT_EQ(number(owner, varmex_u32_SlotNumber), 3U);
  const tItem top(varmex_openContainingItem(classic.get(), varmex_itemType_Chassis, status_));
  EXPECT_EQ(number(top, varmex_u32_ItemType), 1U);
  EXPECT_FALSE(varmex_getItemContainer(classic.get(), varmex_container_Devices, status_));
  EXPECT_TRUE(failed(-380756, "varmex_errorAttributeNotApplicable"));
}

// The classic file is done with before the express one is looked at.
TEST_F(tDevices, theFilesAreReadInOrder) {
  describe(
      "[System]\nChassisList=1\n[Chassis1]\nSlotList=2,3,2\n[Chassis1Slot2]\nPCIBusNumber=6\n"
      "PCIDeviceNumber=3\n[Chassis1Slot3]\nPCIBusNumber=6\nPCIDeviceNumber=3\n",
      "[System]\nX=1\n");
  EXPECT_EQ(status_.code(), -380753) << status_.text();
}

TEST_F(tDevices, areFoundAmongMany) {
  std::string names;
  for (std::uint32_t bus = 300; bus > 0; --bus) {
    names += "PXI0::" + std::to_string(bus) + "-" + std::to_string(bus % 32) + ".0::INSTR;";
  }
  addressInfo(names);
  for (std::uint32_t bus = 1; bus <= 300; ++bus) {
    EXPECT_TRUE(device(bus, bus % 32, 0)) << bus;
    EXPECT_FALSE(device(bus, bus % 32 + 1, 0)) << bus;
    varmex_releaseStatus(status_);
  }
}

// Each level names its one section twice: walked as often as named, it would take for ever.
TEST_F(tDevices, aListThatRepeatsItselfCostsItsLength) {
  std::string text = "[System]\nChassisList=1,1\n[Chassis1]\nSlotList=2,2\n[Chassis1Slot2]\n";
  std::string section = "Chassis1Slot2";
  for (int level = 0; level < 60; ++level) {
    text += "FunctionList=1,1\n";
    section += "Function1";
    text += "[" + section + "]\nPCIBusNumber=" + std::to_string(level) + "\nPCIDeviceNumber=1\n";
    if (level == 59) break;
    text += "DeviceList=2,2\n";
    section += "Device2";
    text += "[" + section + "]\n";
  }
  describe(text, "");
  ASSERT_TRUE(session_) << status_.text();
  EXPECT_EQ(number(device(59, 1, 0), varmex_u32_SlotNumber), 2U);
}

TEST_F(tDevices, oneDeviceHasOnePlace) {
  const std::string express =
      "[System]\nChassisList=1\n[Chassis1]\nSlotList=1,2\n"
      "[Chassis1Slot1]\nAddressInfo=PXI0::5-3.0::INSTR;PXI0::5-3.1::INSTR\n"
      "[Chassis1Slot2]\nAddressInfo=PXI0::6-3.0::INSTR\n";
  describe("", express);
  EXPECT_EQ(number(device(5, 3, 1), varmex_u32_SlotNumber), 1U);
  const std::string conflict =
      R"("bus":5,"dev":3,"varmex_debug":{"description":)"
      R"("Conflicting chassis/slot information was found  for a device"}})";
  describe("", express + "[Chassis1Slot2]\nAddressInfo=PXI0::5-3.2::INSTR\n");
  EXPECT_FALSE(session_);
  EXPECT_TRUE(failed(-380753, "varmex_errorInformationConflict",
                     R"({"existingChassis":1,"existingSlot":1,"chassis":1,"slot":2,)" + conflict));
  describe(
      "[System]\nChassisList=1\n[Chassis1]\nSlotList=2\n[Chassis1Slot2]\nPCIBusNumber=6\n"
      "PCIDeviceNumber=3\n",
      express);
  EXPECT_FALSE(session_) << "the same slot in both files";
  EXPECT_EQ(status_.code(), -380753);
}

}  // namespace

}  // namespace test
