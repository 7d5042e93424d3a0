#include <functional>
#include <thread>

#include "tests/support/model.h"
#include "varmex/triggers.hpp"

namespace test {

namespace {

// An 18-line description: a module in slot 3 of chassis 1, on bus 1, and a bridge.
class tWrapper : public tModel {
 protected:
  void SetUp() override {
    machine_.writePxieSys(
        "[System]\nChassisList=1,2\n"
        "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=3,4\nTriggerBusList=1\n"
        "TriggerBridgeList=1\n[Chassis1TriggerBus1]\nSlotList=3\n"
        "[Chassis1Slot3]\nSlotType=PXIePeripheralSlot\nAddressInfo=PXI0::205-3.1::INSTR\nVendor=W\n"
        "[Chassis1Slot4]\nSlotType=PXIePeripheralSlot\n"
        "[Chassis2]\nVendor=V\nModel=M\nSerialNumber=T\nSlotList=\"\"\n");
    machine_.writePxiSys(
        "[System]\nChassisList=1\n[Chassis1]\nSlotList=\"\"\nTriggerBridgeList=1\n"
        "[Chassis1TriggerBridge1]\nSourceTriggerBus=1\nDestinationTriggerBus=2\nLineMappingSpec=1\n"
        "[Chassis1LineMappingSpec1]\nPXI_TRIG0=1,2\n");
  }

  // What a call throws; code 0 when it throws nothing.
  template <class Call>
  static varmex::Error thrownBy(Call call) {
    try {
      call();
    } catch (const varmex::Error& error) {
      return error;
    }
    return {0, "{}"};
  }
};

TEST_F(tWrapper, answersWhatTheInterfaceAnswers) {
  const varmex::Session session;
  EXPECT_EQ(session.version(), "19.5.0");
  EXPECT_TRUE(session.isCurrent());
  EXPECT_FALSE(session.warning());
  EXPECT_EQ(session.modules().size(), 1U);
  EXPECT_FALSE(session.findModule("none"));
  std::string serials;
  for (const varmex::Chassis& chassis : session.chassis()) serials += chassis.serialNumber();
  EXPECT_EQ(serials, "ST");
  const varmex::Chassis chassis = session.chassis(1);
  EXPECT_EQ(chassis.slots().size(), 2U);
  EXPECT_EQ(chassis.slots()[1].number(), 4U);
  EXPECT_EQ(chassis.slot(3).triggerBusNameIfAny(), "TriggerBus1");
  EXPECT_EQ(chassis.slot(4).triggerBusNameIfAny(), std::nullopt);
  EXPECT_TRUE(session.chassis(2).slots().empty());
  const varmex::Device device = session.device(205, 3, 0);
  EXPECT_EQ(device.kind(), varmex::Kind::device);
  EXPECT_EQ(device.vendor() + '|' + device.name(), "W|PXI1Slot3");
  EXPECT_EQ(device.modelIfAny(), std::nullopt);
  EXPECT_EQ(device.slot().devices()[0].function(), 1U);
  EXPECT_TRUE(device.isExpress());
  const varmex::TriggerBridge bridge = session.triggerBridges()[0];
  EXPECT_EQ(bridge.lineMapping(0), 6U);
  EXPECT_EQ(bridge.destinationTriggerBus(), 2U);
}

TEST_F(tWrapper, throwsWhatFailed) {
  const varmex::Session session;
  const auto unknown = thrownBy([&] { session.chassis(1).slot(99); });
  EXPECT_EQ(unknown.constant(), "varmex_errorUnknownItem");
  EXPECT_EQ(unknown.detail(), "type: slot, slotNum: 99, chassisNum: 1");
  EXPECT_EQ(unknown.what(), "varmex_errorUnknownItem (-380751): " + unknown.detail());
  const auto bridge = session.chassis(1).triggerBridges()[0];
  const std::pair<std::int32_t, std::function<void()>> calls[] = {
      {varmex_errorNotConnected, [&] { session.chassis(1).slot(4).triggerBusNumber(); }},
      {varmex_errorIterationFailure, [&] { session.slots()[2]; }},
      {varmex_errorInformationNotAvailable, [&] { bridge.lineMapping(7); }},
      {varmex_errorInvalidParameter, [&] { bridge.lineMapping(8); }}};
  for (const auto& [code, call] : calls) EXPECT_EQ(thrownBy(call).code(), code);
  const varmex::Error escaped(-1, R"({"a":{"b":"\"\\\n\u001f"},"c":[1,-2.5],"d":"é"})");
  EXPECT_EQ(escaped.detail(), "b: \"\\\n\x1F, c: 1, c: -2.5, d: é");
  EXPECT_STREQ(varmex::Error(-2, "{}").what(), "varmex (-2)");
  for (const char* broken : {"", "{\"a", "{\"a\\", "{\"a\":\"\\u00", "}}]],"}) {
    EXPECT_TRUE(varmex::Error(-3, broken).constant().empty());
  }
  machine_.writePxiSys("[System]\n");
  EXPECT_EQ(thrownBy([] { varmex::Session(); }).code(), varmex_errorInformationNotAvailable);
}

TEST_F(tWrapper, warnsOfAFailedSynchronization) {
  const varmex::Session session = varmex::Session::synchronized();
  ASSERT_TRUE(session.warning());
  EXPECT_EQ(session.warning()->detail(), "wrappedCode: -380766");
  EXPECT_EQ(session.chassis().size(), 2U);
}

// Whatever goes first: the session stays open as long as anything needs it.
TEST_F(tWrapper, itemsKeepTheirSession) {
  std::optional<varmex::Session> session(std::in_place);
  varmex::Device device = session->devices()[0];
  auto slots = session->chassis(1).slots();
  const varmex::Session copy = *session;
  session.reset();
  EXPECT_EQ(device.slot().chassis().vendor(), "V");
  EXPECT_EQ((*slots.begin()).number(), 3U);
  const varmex::Device sameDevice = device;
  device = copy.device(205, 3, 0);
  EXPECT_EQ(sameDevice.bus(), device.bus());
}

TEST_F(tWrapper, waits) {
  using namespace std::chrono_literals;
  const varmex::Session session;
  EXPECT_EQ(session.wait(0ms), varmex::WaitResult::timedOut);
  EXPECT_EQ(session.wait(-1h), varmex::WaitResult::timedOut);
  const std::jthread canceller([&] { session.cancelWaits(); });
  EXPECT_EQ(session.wait(), varmex::WaitResult::cancelled);
  const varmex::Session later;
  EXPECT_EQ(later.wait(0ms), varmex::WaitResult::timedOut);
  machine_.writePxieSys("; another\n");
  EXPECT_EQ(later.wait(10s), varmex::WaitResult::changed);
}

TEST_F(tWrapper, routes) {
  const varmex::RoutingSession one(205, 3, 0, varmex::RoutingSession::triggerBus);
  const varmex::RoutingSession other("205.3.0:1");
  const auto terminals = one.terminals();
  ASSERT_EQ(terminals.size(), 8U);
  EXPECT_EQ(terminals[7].name + '|' + terminals[7].busName, "PXI_Trig7|PXIChassis1TriggerBus1");
  EXPECT_EQ(terminals[7].busLine, 7U);
  const std::string token = "to\"ken\\";
  EXPECT_TRUE(one.calculateRoutes({}, {"PXI_Trig2"}).empty());
  auto routes =
      one.calculateRoutes({{"PXI_Trig2", token}, {"PXI_Trig3", token}}, {"PXI_Trig3", "PXI_Trig2"});
  ASSERT_EQ(routes.size(), 2U);
  EXPECT_EQ(routes[0].destination(), "PXI_Trig3");
  EXPECT_NE(routes[0].ticket(), routes[1].ticket());
  auto late = one.calculateRoutes({{"PXI_Trig2", "late"}}, {"PXI_Trig2"});
  auto rival = other.calculateRoutes({{"PXI_Trig2", "another"}}, {"PXI_Trig2"});
  routes[1].reserve();
  routes[1].program();
  EXPECT_EQ(thrownBy([&] { rival.at(0).reserve(); }).code(), telmar_ra_errorResourcesInUse);
  std::vector<varmex::Conflict> conflicts;
  EXPECT_NE(thrownBy([&] { late.at(0).reserve(&conflicts); }).code(), 0);
  ASSERT_EQ(conflicts.size(), 1U);
  EXPECT_EQ(conflicts[0].ticket, routes[1].ticket());
  // The end of a route gives its terminal back.
  routes.clear();
  rival[0].reserve();
  rival[0].unreserve();
  EXPECT_EQ(thrownBy([] { varmex::RoutingSession("205.3.0:2"); }).code(), varmex_errorNotConnected);
}

template <class Type>
std::string textOf(const std::vector<varmex::Attempt<Type>>& attempts) {
  std::string text;
  for (const auto& attempt : attempts) {
    text += std::to_string(attempt.number) + (attempt.item ? " " : "! ");
    EXPECT_NE(attempt.item.has_value(), attempt.error.has_value());
  }
  return text;
}

std::string textOf(const varmex::Module& module) {
  std::string text = module.place() + ' ' + module.name + " [" + module.alias + '|' +
                     module.title() + '|' + module.chassisSerialNumber + ']';
  for (const std::uint32_t slot : module.slots) text += ' ' + std::to_string(slot);
  for (const varmex::PciAddress& address : module.addresses) text += ' ' + address.text();
  for (const std::string& name : module.resourceNames) text += ' ' + name;
  if (const auto possible = module.possibleLinkWidth()) {
    text += " x" + std::to_string(module.linkWidth.value_or(0)) + '/' + std::to_string(*possible);
  }
  return text + (module.isLinkReduced() ? "!" : "");
}

// A controller without a function, a module of three slots below its width, one in both files, one
// that only the classic file has; two slots without a section and a chassis without a model, with
// which the lists fail, and all else is still there.
TEST_F(tWrapper, tellsModulesAndGoesOnBehindWhatCannotBeOpened) {
  machine_.writePxiSys(
      "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSlotList=5,6\n"
      "[Chassis1Slot5]\nPCIBusNumber=2\nPCIDeviceNumber=1\n"
      "[Chassis1Slot6]\nPCIBusNumber=3\nPCIDeviceNumber=1\n");
  machine_.writePxieSys(
      "[System]\nChassisList=1,2,300\n[Chassis2]\nVendor=V\nSlotList=\"\"\n"
      "[Chassis300]\nVendor=V\nModel=M\nSerialNumber=T\nSlotList=1\n[Chassis300Slot1]\nX=1\n"
      "[Chassis1Slot1]\nSlotType=PXIeSystemSlot2Link\nModel=Host\n"
      "[Chassis1Slot2]\nSlotType=PXIePeripheralSlot\nModel=Wide\nInstanceName=W\n"
      "AddressInfo=PXI0::9-0.0::INSTR;;PXI0::8-0.0::INSTR+x\nPeripheralSlotLinkWidth1=4\n"
      "PeripheralModuleLinkWidthMax=8\nPeripheralModuleLinkWidthNegotiated=2\n"
      "PeripheralModuleOccupiedSlotList=3,4\n"
      "[Chassis1Slot3]\nSlotType=PXIePeripheralSlot\n[Chassis1Slot4]\nSlotType=PXI-1Slot\n"
      "[Chassis1Slot5]\nSlotType=PXIeHybridSlot\nModel=Both\nInstanceName=1/2\n"
      "AddressInfo=PXI0::7-0.0::INSTR\nPeripheralSlotLinkWidth1=4\n"
      "PeripheralModuleLinkWidthNegotiated=2\n"
      "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=1,2,3,4,5,290,291\n");
  const varmex::Session session;
  EXPECT_EQ(textOf(session.eachChassis()), "1 2! ");
  EXPECT_EQ(textOf(session.chassis(1).eachSlot()), "1 2 3 4 5 6 290! ");
  const auto known = [](const varmex::Error&) { return std::vector<std::uint32_t>{300, 2, 9}; };
  EXPECT_EQ(textOf(session.eachChassis(known)), "300 2! 9! ");
  EXPECT_EQ(textOf(session.chassis(1).eachSlot(known)), "300! 2 9! ");
  EXPECT_EQ(textOf(session.chassis(300).eachSlot(known)), "1 ");
  std::string modules;
  for (const varmex::ModuleAttempt& attempt : session.eachModule()) {
    modules += attempt.module ? textOf(*attempt.module)
                              : std::to_string(attempt.chassisNumber) + '/' +
                                    std::to_string(attempt.slotNumber.value_or(0)) + '!';
    modules += '\n';
  }
  EXPECT_EQ(modules,
            "1/1 PXI1Slot1 [|Host|S] 1\n"
            "1/2 PXI1Slot2 [W|Wide|S] 2 3 4 8.0.0 9.0.0 PXI0::9-0.0::INSTR PXI0::8-0.0::INSTR x "
            "x2/4!\n"
            "1/5 PXI1Slot5 [1/2|Both|S] 5 7.0.0 PXI0::7-0.0::INSTR\n"
            "1/6 PXI1Slot6 [|PXI1Slot6|S] 6 3.1.0\n1/290!\n2/0!\n");
  EXPECT_EQ(thrownBy([&] { session.modules(); }).code(), varmex_errorUnknownItem);
  EXPECT_EQ(thrownBy([&] { session.findModule("none"); }).code(), varmex_errorUnknownItem);
  for (const auto& [name, place] : {std::pair{"w", "1/2"},
                                    {"1/2", "1/5"},
                                    {"1/1", "1/1"},
                                    {"9.0.0", "1/2"},
                                    {"pxi0::7-0.0::instr", "1/5"},
                                    {"PXI1Slot6", "1/6"}}) {
    EXPECT_EQ(session.findModule(name).value().place(), place) << name;
  }
}

// Bridges as "number:source>destination" with the pairs of lines that they join.
varmex::BridgeMap bridge(std::uint32_t number, std::uint32_t source, std::uint32_t destination,
                         std::initializer_list<std::pair<std::size_t, std::uint32_t>> lines) {
  varmex::BridgeMap map{number, source, destination, {}};
  for (const auto& [from, to] : lines) map.lines[from] |= 1U << to;
  return map;
}

std::string textOf(const varmex::TriggerWays& ways) {
  std::string text;
  for (const varmex::TriggerWay& way : ways.ways) {
    for (const varmex::BridgeMap& passed : way.bridges) text += std::to_string(passed.bridge);
    for (std::size_t line = 0; line < 8; ++line) {
      if (way.lines[line]) {
        text += ' ' + std::to_string(line) + '>' + std::to_string(way.lines[line]);
      }
    }
    text += ';';
  }
  return text + (ways.isComplete ? "" : "...");
}

TEST(tTriggerWays, areShortestFirstAndCarryALine) {
  const std::vector<varmex::BridgeMap> bridges = {bridge(1, 1, 2, {{0, 1}, {3, 3}, {3, 4}}),
                                                  bridge(2, 2, 3, {{0, 0}, {4, 7}}),
                                                  bridge(3, 1, 3, {{5, 5}}),
                                                  bridge(4, 2, 3, {{1, 6}}),
                                                  bridge(5, 3, 4, {{6, 0}, {7, 0}}),
                                                  bridge(6, 4, 4, {{0, 7}}),
                                                  bridge(7, 4, 5, {{7, 7}}),
                                                  bridge(8, 3, 1, {{2, 2}})};
  using enum varmex::WaysWanted;
  for (const auto& [from, to, wanted, most, ways] :
       {std::tuple{1U, 1U, all, 9U, " 0>1 1>2 2>4 3>8 4>16 5>32 6>64 7>128;"},
        {1U, 3U, shortest, 9U, "3 5>32;"},                   // one bridge rather than two
        {1U, 3U, all, 9U, "3 5>32;12 3>128;14 0>64;"},       // and the longer ones
        {1U, 4U, shortest, 9U, "125 3>1;145 0>1;"},          // 3 then 5 carries no line
        {1U, 4U, shortest, 1U, "125 3>1;..."},               //
        {1U, 5U, shortest, 9U, "12567 3>128;14567 0>128;"},  // over bus 4 twice
        {4U, 1U, all, 9U, ""},
        {3U, 1U, shortest, 9U, "8 2>4;"},
        {9U, 8U, all, 9U, ""}}) {
    EXPECT_EQ(textOf(varmex::findTriggerWays(from, to, bridges, wanted, most)), ways)
        << from << " to " << to;
  }
}

}  // namespace

}  // namespace test
