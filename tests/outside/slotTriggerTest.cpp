#include "tests/support/model.h"

namespace test {

namespace {

constexpr const char* kExpressChassis = "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\n";
constexpr const char* kClassicChassis = "[Chassis1]\nVendor=V\nModel=M\n";
constexpr const char* kClassicSlots =
    "[Chassis1Slot2]\nPCISlotPath=a,b\n[Chassis1Slot3]\nX=1\n[Chassis1Slot4]\nX=1\n";

class tSlotTrigger : public tModel {
 protected:
  void express(const std::string& lines) {
    describe("", std::string(kExpressChassis) + lines +
                     "[Chassis1Slot2]\nX=1\n[Chassis1Slot3]\nX=1\n[Chassis1Slot4]\nX=1\n");
  }
  void classic(const std::string& lines) {
    describe(std::string(kClassicChassis) + lines + kClassicSlots, "");
  }
  std::string lost(const std::string& family, const std::string& type, std::uint32_t slotNumber) {
    return R"({"debug_msg":"Could not find )" + family +
           R"(trigger bus information for slot","slot_num":)" + std::to_string(slotNumber) +
           R"(,"chassis_num":1,"trigBusType":")" + type + "\"}";
  }
  std::string refusal(const std::string& type, std::uint32_t slotNumber) {
    return R"({"slot_num":)" + std::to_string(slotNumber) + R"(,"chassis_num":1,"trigBusType":")" +
           type + "\"}";
  }
};

TEST_F(tSlotTrigger, theFirstBusOfTheListCounts) {
  express(
      "TriggerBusList=9,2,1\n[Chassis1TriggerBus1]\nSlotList=3,4\n"
      "[Chassis1TriggerBus2]\nSlotList=2,3\n");
  const tItem item = slot(1, 3);
  EXPECT_EQ(number(item, varmex_u32_TriggerBusNumber), 2U);
  EXPECT_EQ(text(item, varmex_str_TriggerBusName), "TriggerBus2");
  EXPECT_EQ(text(item, varmex_str_TriggerBusStableName), "PXIChassis1TriggerBus2");
  EXPECT_EQ(number(slot(1, 4), varmex_u32_TriggerBusNumber), 1U);
  EXPECT_EQ(status_.code(), 0);
}

// What a walk would not have come to does not count, whichever slot asks first.
TEST_F(tSlotTrigger, refusalsCountForSlotsThatNoMatchCameAheadOf) {
  const struct {
    std::uint32_t attribute;
    const char* lines;
    const char* message;
  } cases[] = {
      {varmex_u32_TriggerBusNumber,
       "TriggerBusList=1,2,3\n[Chassis1TriggerBus1]\nSlotList=3\n[Chassis1TriggerBus2]\nX=1\n"
       "[Chassis1TriggerBus3]\nSlotList=3,4\n",
       "Section Chassis1TriggerBus2 item: SlotList not found"},
      {varmex_u32_StarTriggerNumber,
       "StarTriggerList=1\n[Chassis1StarTrigger1]\nPXI_STAR0=3\nPXI_STAR5=x\nPXI_STAR6=4\n"
       "SystemTimingSlot=4\n",
       "The value in section Chassis1StarTrigger1 item PXI_STAR5 is invalid"},
      {varmex_u32_DStarTriggerNumber,
       "StarSystemTimingSetList=1\n[Chassis1StarSystemTimingSet1]\nSystemTimingSet0=3\n"
       "SystemTimingSet5=\" \"\nSystemTimingSet6=4\nStarSystemTimingSlot=4\n",
       "Section Chassis1StarSystemTimingSet1 item: SystemTimingSet5 not found"},
      {varmex_u32_OccupyingModuleSlot,
       "SlotList=2,3,4\n[Chassis1Slot2]\nPeripheralModuleOccupiedSlotList=3\n"
       "[Chassis1Slot3]\nPeripheralModuleOccupiedSlotList=3,\n"
       "[Chassis1Slot4]\nPeripheralModuleOccupiedSlotList=4\n",
       "The number list in section Chassis1Slot3 item PeripheralModuleOccupiedSlotList is "
       "invalid."},
  };
  for (const auto& [attribute, lines, message] : cases) {
    for (const bool refusedFirst : {true, false}) {
      express(lines);
      for (const bool refused : {refusedFirst, !refusedFirst, refusedFirst}) {
        const std::uint32_t answer = number(slot(1, refused ? 4 : 3), attribute);
        if (refused) {
          EXPECT_TRUE(notFound(message));
        } else {
          EXPECT_EQ(answer, attribute == varmex_u32_OccupyingModuleSlot ? 2U : 1U) << lines;
        }
      }
    }
  }
}

TEST_F(tSlotTrigger, aControllerThatIsNoNumberRefusesTheSlotsOfItsSet) {
  express(
      "StarSystemTimingSetList=1,2\n"
      "[Chassis1StarSystemTimingSets1]\nStarSystemTimingSet0=2\nSystemTimingSlot=2\n"
      "[Chassis1StarSystemTimingSets2]\nStarSystemTimingSet0=3\nStarSystemTimingSet1=y\n"
      "SystemTimingSlot=z\n");
  EXPECT_EQ(number(slot(1, 2), varmex_u32_DStarTriggerNumber), 1U);
  number(slot(1, 3), varmex_u32_DStarTriggerNumber);
  EXPECT_TRUE(notFound(
      "The value in section Chassis1StarSystemTimingSets2 item SystemTimingSlot is invalid"));
  number(slot(1, 4), varmex_u32_DStarTriggerNumber);
  EXPECT_TRUE(notFound(
      "The value in section Chassis1StarSystemTimingSets2 item StarSystemTimingSet1 is invalid"));
}

TEST_F(tSlotTrigger, aBusIsReadWhereTheSlotStands) {
  describe(std::string(kClassicChassis) + "TriggerBusList=1\n[Chassis1TriggerBus1]\nSlotList=3\n" +
               kClassicSlots,
           std::string(kExpressChassis) + "[Chassis1Slot4]\nX=1\n");
  EXPECT_EQ(number(slot(1, 3), varmex_u32_TriggerBusNumber), 1U);
  number(slot(1, 2), varmex_u32_TriggerBusNumber);
  EXPECT_TRUE(notConnected(lost("", "PXI_Trig", 2)));
  number(slot(1, 4), varmex_u32_TriggerBusNumber);
  EXPECT_TRUE(notFound("Section Chassis1 item: TriggerBusList not found"));
}

TEST_F(tSlotTrigger, busNamesFollowTheRegistry) {
  const std::string key = "SOFTWARE\\WOW6432Node\\Corvane\\COR-VARMEX";
  const auto busName = [this] {
    express("TriggerBusList=1\n[Chassis1TriggerBus1]\nSlotList=3\n");
    return text(slot(1, 3), varmex_str_TriggerBusStableName);
  };
  machine_.setRegistryNumber("SOFTWARE\\Corvane\\COR-VARMEX", "PXITrigUseStableBusNameFormat", 1);
  EXPECT_EQ(busName(), "PXIChassis1TriggerBus1");
  machine_.setRegistryNumber(key, "PXITrigUseStableBusNameFormat", 0);
  EXPECT_EQ(busName(), "PXIChassis1TriggerBus1");
  machine_.setRegistryNumber(key, "PXITrigUseStableBusNameFormat", 0x80000000);
  EXPECT_EQ(busName(), "PXIeChassis(S, V, M)/TriggerBus1");
  machine_.setRegistryValue(key, "PXITrigUseStableBusNameFormat", 3, std::string("\0\1", 2));
  EXPECT_EQ(busName(), "PXIeChassis(S, V, M)/TriggerBus1");
  machine_.setRegistryValue(key, "PXITrigUseStableBusNameFormat", 3, "\1\1\1\1\1");
  EXPECT_EQ(busName(), "PXIChassis1TriggerBus1");
}

TEST_F(tSlotTrigger, starLines) {
  express(
      "StarTriggerList=7,1\n[Chassis1StarTrigger1]\nSystemTimingSlot=4\nPXI_STAR16=3\n"
      "PXI_STAR17=2\n");
  const tItem line = slot(1, 3);
  EXPECT_EQ(number(line, varmex_u32_StarTriggerNumber), 1U);
  EXPECT_EQ(number(line, varmex_u32_StarTriggerLine), 16U);
  EXPECT_EQ(text(line, varmex_str_StarTriggerLineName), "PXIeChassis(S, V, M)/StarTrigger1Line16");
  EXPECT_EQ(status_.code(), 0);
  text(line, varmex_str_StarTriggerControllerName);
  EXPECT_TRUE(notConnected(refusal("PXI_Star_Controller", 3)));
  const tItem controller = slot(1, 4);
  EXPECT_EQ(number(controller, varmex_u32_StarTriggerNumber), 1U);
  EXPECT_EQ(text(controller, varmex_str_StarTriggerControllerName),
            "PXIeChassis(S, V, M)/StarTrigger1Controller");
  number(controller, varmex_u32_StarTriggerLine);
  EXPECT_TRUE(failed(-380758, "varmex_errorStarController", refusal("PXI_Star", 4)));
  text(controller, varmex_str_StarTriggerLineName);
  EXPECT_TRUE(failed(-380758, "varmex_errorStarController", refusal("PXI_Star", 4)));
  number(slot(1, 2), varmex_u32_StarTriggerNumber);
  EXPECT_TRUE(notConnected(lost("star ", "PXI_Star", 2)));
}

TEST_F(tSlotTrigger, starLinesOfAClassicChassis) {
  classic(
      "StarTriggerList=1,2\n[Chassis1StarTrigger1]\nControllerSlot=2\nPXI_STAR0=3\n"
      "PXI_STAR1=2\n[Chassis1StarTrigger2]\nPXI_STAR5=4\n");
  EXPECT_EQ(number(slot(1, 2), varmex_u32_StarTriggerLine), 1U);
  text(slot(1, 2), varmex_str_StarTriggerControllerName);
  EXPECT_TRUE(notConnected(refusal("PXI_Star_Controller", 2)));
  EXPECT_EQ(number(slot(1, 4), varmex_u32_StarTriggerLine), 5U);
  classic(
      "StarTriggerList=1,2\n[Chassis1StarTrigger1]\nSystemTimingSlot=2\n"
      "[Chassis1StarTrigger2]\nPXI_STAR5=4\nControllerSlot=2\n");
  number(slot(1, 4), varmex_u32_StarTriggerLine);
  EXPECT_TRUE(notFound("Section Chassis1StarTrigger1 item: ControllerSlot not found"));
  classic("StarTriggerList=1\n[Chassis1StarTrigger1]\nPXI_STAR0=x\n");
  number(slot(1, 4), varmex_u32_StarTriggerLine);
  EXPECT_TRUE(notFound("The value in section Chassis1StarTrigger1 item PXI_STAR0 is invalid"));
  classic("");
  number(slot(1, 4), varmex_u32_StarTriggerLine);
  EXPECT_TRUE(
      notConnected(R"({"message":"StarTriggerList item doesn't exist","trigBusType":"PXI_Star"})"));
}

TEST_F(tSlotTrigger, dstarSets) {
  express(
      "StarSystemTimingSetList=8,2,3\n"
      "[Chassis1StarSystemTimingSets2]\nStarSystemTimingSet4=3\nSystemTimingSet4=2\n"
      "SystemTimingSlot=3\nStarSystemTimingSlot=4\n"
      "[Chassis1StarSystemTimingSet2]\nSystemTimingSet9=2\n"
      "[Chassis1StarSystemTimingSet3]\nSystemTimingSet0=2\nStarSystemTimingSlot=4\n");
  const tItem both = slot(1, 3);
  EXPECT_EQ(number(both, varmex_u32_DStarTriggerNumber), 2U);
  EXPECT_EQ(number(both, varmex_u32_DStarTriggerSet), 4U);
  EXPECT_EQ(text(both, varmex_str_DStarTriggerSetName), "PXIeChassis(S, V, M)/DStarTrigger2Set4");
  EXPECT_EQ(text(both, varmex_str_DStarTriggerControllerName),
            "PXIeChassis(S, V, M)/DStarTrigger2Controller");
  const tItem line = slot(1, 2);
  EXPECT_EQ(number(line, varmex_u32_DStarTriggerNumber), 3U);
  EXPECT_EQ(number(line, varmex_u32_DStarTriggerSet), 0U);
  EXPECT_EQ(status_.code(), 0);
  text(line, varmex_str_DStarTriggerControllerName);
  EXPECT_TRUE(notConnected(refusal("PXIe_DStar_Controller", 2)));
  const tItem controller = slot(1, 4);
  EXPECT_EQ(number(controller, varmex_u32_DStarTriggerNumber), 3U);
  number(controller, varmex_u32_DStarTriggerSet);
  EXPECT_TRUE(notConnected(refusal("PXIe_DStar", 4)));
  text(controller, varmex_str_DStarTriggerSetName);
  EXPECT_TRUE(notConnected(refusal("PXIe_DStar", 4)));
}

TEST_F(tSlotTrigger, withoutDstar) {
  express("StarSystemTimingSetList=2\n[Chassis1StarSystemTimingSets2]\nStarSystemTimingSet17=3\n");
  number(slot(1, 3), varmex_u32_DStarTriggerNumber);
  EXPECT_TRUE(notConnected(lost("dstar ", "PXIe_DStar", 3)));
  classic("StarSystemTimingSetList=1\n");
  number(slot(1, 3), varmex_u32_DStarTriggerNumber);
  EXPECT_TRUE(notConnected(
      R"({"message":"This slot isn't connected to DStar","trigBusType":"PXIe_DStar"})"));
}

}  // namespace

}  // namespace test
