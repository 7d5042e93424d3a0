// Of the model what no table of cases tells: see modelCasesTest.cpp for the rest.

#include <array>
#include <nlohmann/json.hpp>
#include <thread>

#include "tests/support/model.h"

namespace test {

namespace {

using tSession = tModel;

TEST_F(tSession, tellsWhereItsFilesAre) {
  describe("", "");
  EXPECT_EQ(texts(session_, {varmex_str_PxiSysPath, varmex_str_PxieSysPath,
                             varmex_str_ConfigurationPath, varmex_str_Version}),
            machine_.pxiSys().string() + '|' + machine_.pxieSys().string() + '|' +
                machine_.configuration().string() + "|19.5.0");
}

TEST_F(tSession, refusesWhatItCannotDo) {
  describe("", kExpressChassis);
  const tItem item = chassis(1);
  ASSERT_TRUE(item) << status_.text();
  const tDeviceAddress address{0, 1, 2, 0};
  const tDeviceAddress reserved{1, 0, 0, 0};
  const auto expectRefused = [this](const std::string& failure, auto function, auto... arguments) {
    EXPECT_FALSE(function(arguments..., status_));
    EXPECT_EQ(takeFailure(), failure);
  };
  const std::string none = invalidHandle();
  expectRefused(none, varmex_openChassisByNumber, item.get(), 4U);
  expectRefused(failure(-380752, "varmex_errorInvalidHandle",
                        inDebug(R"({"msg":"Handle is not a chassis handle."})")),
                varmex_openSlotByNumber, session_.get(), 1U);
  // The arguments are looked at ahead of the handle.
  expectRefused(invalidParameter(R"({"msg":"reserved parameter must be set to 0"})"),
                varmex_openDeviceByAddr, nullptr, &reserved);
  expectRefused(invalidParameter(R"({"msg":"parameter addr is NULL"})"), varmex_openDeviceByAddr,
                nullptr, nullptr);
  expectRefused(invalidParameter(R"({"message":"ItemIterator pointer cannot be null!"})"),
                varmex_ItemIterator_nextItem, nullptr, nullptr);
  varmex_ItemIterator position = 0;
  expectRefused(none, varmex_openChassisByNumber, nullptr, 1U);
  expectRefused(none, varmex_openSlotByNumber, nullptr, 1U);
  expectRefused(none, varmex_openDeviceByAddr, nullptr, &address);
  expectRefused(none, varmex_openContainingItem, nullptr, 1U);
  expectRefused(none, varmex_duplicate, nullptr);
  expectRefused(none, varmex_getItemContainer, nullptr, 1U);
  expectRefused(none, varmex_duplicateItemContainer, nullptr);
  expectRefused(none, varmex_getStringAttribute, nullptr, 0U);
  expectRefused(none, varmex_getU32Attribute, nullptr, 0U);
  expectRefused(none, varmex_ItemIterator_begin, nullptr);
  expectRefused(none, varmex_ItemIterator_end, nullptr);
  expectRefused(none, varmex_ItemIterator_nextItem, nullptr, &position);
  varmex_close(nullptr);
  varmex_destroyItemContainer(nullptr);
}

TEST_F(tSession, refusesTextsOfWideCharacters) {
  describe(std::string("\xFF\xFE[\0", 4), "");
  EXPECT_FALSE(session_);
  EXPECT_EQ(takeFailure(), notFound("An exception occurred in tIniFile"));
}

// On a file that can't be read, and on the lock: each takes ten seconds, here at once.
TEST_F(tSession, givesUp) {
  std::filesystem::create_directories(machine_.pxiSys());
  std::thread other([this] {
    EXPECT_FALSE(tItem(varmex_openPXISession(0, status_)));
    const nlohmann::ordered_json detail = {{"path", machine_.pxiSys().string()}};
    EXPECT_EQ(takeFailure(), failure(-380764, "timeoutErrorCode", inDebug(detail.dump())));
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  machine_.writeConfiguration();
  const tExclusiveLock lock(machine_.configuration());
  tStatus status;
  EXPECT_FALSE(tItem(varmex_openPXISession(0, status)));
  EXPECT_EQ(test::takeFailure(status), failure(-380763, "timeoutErrorCode"));
  other.join();
}

using tChassis = tModel;

TEST_F(tChassis, findsItsDescriptionFile) {
  const std::string key = "SOFTWARE\\PXISA\\CurrentVersion";
  const std::string full = (machine_.folder() / "x.ini").string();
  const auto fileFor = [&](const std::string& file) {
    describe("", kExpressChassis + ("DescriptionFile=" + file));
    const std::string found = text(chassis(1), varmex_str_ChassisDescriptionFile);
    EXPECT_EQ(takeFailure(), found == "<null>" ? notAvailable(R"({"attribute":4102})") : "");
    return found;
  };
  EXPECT_EQ(fileFor(full), full);
  EXPECT_EQ(fileFor("x.ini"), "<null>");
  const std::string slash = std::filesystem::path("a/b").make_preferred().string().substr(1, 1);
  const std::string most(258, 'd');
  for (const auto& [folder, file, found] :
       {std::array<std::string, 3>{"folder", "x.ini", "folder" + slash + "x.ini"},
        {"folder" + slash, "x.ini", "folder" + slash + "x.ini"},
        {"", "x.ini", "x.ini"},
        {"folder", "\"\"", "folder"},
        {most, "x", most + slash + "x"},
        {most + "dd", "x.ini", "<null>"}}) {
    machine_.setRegistryText(key, "ChassisDescriptionFilePath", folder);
    EXPECT_EQ(fileFor(file), found);
  }
  machine_.setRegistryNumber(key, "ChassisDescriptionFilePath", 7);
  EXPECT_EQ(fileFor("x.ini"), "<null>");
}

using tSlot = tModel;

TEST_F(tSlot, busNamesFollowTheRegistry) {
  using namespace std::string_literals;
  const std::string plain = "PXIChassis1TriggerBus1";
  const std::string stable = "PXIeChassis(S, V, M)/TriggerBus1";
  const char* const name = "PXITrigUseStableBusNameFormat";
  constexpr std::uint32_t kBinary = 3, kNumber = 4;
  describe("", kExpressChassis + "TriggerBusList=1\n[Chassis1TriggerBus1]\nSlotList=3\n"s +
                   "[Chassis1Slot3]\nX=1\n");
  machine_.setRegistryNumber("SOFTWARE\\Corvane\\COR-VARMEX", name, 1);
  EXPECT_EQ(text(slot(1, 3), varmex_str_TriggerBusStableName), plain);
  for (const auto& [type, bytes, expected] : {std::tuple{kNumber, "\0\0\0\0"s, plain},
                                              {kNumber, "\0\0\0\x80"s, stable},
                                              {kBinary, "\0\1"s, stable},
                                              {kBinary, "\1\1\1\1\1"s, plain}}) {
    machine_.setRegistryValue("SOFTWARE\\WOW6432Node\\Corvane\\COR-VARMEX", name, type, bytes);
    EXPECT_EQ(text(slot(1, 3), varmex_str_TriggerBusStableName), expected);
  }
}

class tDevices : public tModel {
 protected:
  std::string addressInfo(const std::string& text) {
    describe("", "[System]\nChassisList=1\n" + std::string(kExpressChassis) +
                     "SlotList=2\n[Chassis1Slot2]\nAddressInfo=" + text + "\n");
    return listed(slot(1, 2), varmex_container_Devices,
                  {varmex_u32_DeviceBus, varmex_u32_DeviceNumber, varmex_u32_DeviceFunction});
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
      {"PXI 7::2-3.4 junk::INSTR", "2 3 4; "},
      // Each piece of a name is missed.
      {"PXIx::5-3.1::INSTR;PXI0:5-3.1::INSTR;PXI0::x-3.1::INSTR;PXI0::5-x.1::INSTR", ""},
      {"PXI5:3::1::INSTR;PXI5::3:1::INSTR;PXI5::3::x::INSTR;PXI5::3::1::INST", ""},
      {"PXI0::5-3.1::INSTRx;PXI0::5-3.:::INSTR;PXI0::5-3.1", ""},
      // A plus ends a name, also where it would be a sign.
      {"PXI0:: +5-3.1::INSTR;PXI0:: \t5- 3.-1::INSTR", "5 3 4294967295; "}};
  for (const auto& [text, devices] : cases) EXPECT_EQ(addressInfo(text), devices) << text;
  EXPECT_EQ(status_.code(), 0);
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

// Each level names its one section twice: walked as often as named, it would take for ever. There
// are some hundreds, in sections whose names grow with each.
TEST_F(tDevices, ofADeepTreeThatRepeatsItselfFitASmallStack) {
  std::string text =
      "[System]\nChassisList=1,1\n[Chassis1]\nVendor=V\nModel=M\nSlotList=2,2\n"
      "[Chassis1Slot2]\nPCISlotPath=a,b\n";
  std::string section = "Chassis1Slot2";
  std::size_t levels = 0;
  while (text.size() < 1 << 20) {
    section += "Function1";
    text += "FunctionList=1,1\n[" + section + "]\nPCIBusNumber=" + std::to_string(levels++) +
            "\nPCIDeviceNumber=1\nDeviceList=2,2\n";
    section += "Device2";
    text += "[" + section + "]\n";
  }
  EXPECT_GT(levels, 200U);
  runWithStack(256 * 1024, [&] {
    describe(text + "FunctionList=\"\"\n", "");
    EXPECT_EQ(items(session_, varmex_container_Devices).size(), levels);
  });
  EXPECT_EQ(number(device(59, 1, 0), varmex_u32_SlotNumber), 2U) << status_.text();
}

using tContainers = tModel;

TEST_F(tContainers, areWalkedByPositionAndOutlivedByTheirItems) {
  describe("", kExpressChassis + std::string("SlotList=5,6,7\n[Chassis1Slot5]\nX=1\n"
                                             "[Chassis1Slot6]\nX=1\n[Chassis1Slot7]\nX=1\n"));
  tContainer original = container(chassis(1), varmex_container_Slots);
  tContainer list(varmex_duplicateItemContainer(original.get(), status_));
  original.reset();
  EXPECT_EQ(varmex_ItemIterator_begin(list.get(), status_), 0U);
  EXPECT_EQ(varmex_ItemIterator_end(list.get(), status_), 3U);
  varmex_ItemIterator position = 1;
  const tItem item(varmex_ItemIterator_nextItem(list.get(), &position, status_));
  EXPECT_EQ(position, 2U);
  for (const varmex_ItemIterator end : {varmex_ItemIterator{3}, ~varmex_ItemIterator{0}}) {
    position = end;
    EXPECT_FALSE(varmex_ItemIterator_nextItem(list.get(), &position, status_));
    EXPECT_EQ(takeFailure(),
              failure(-380760, "varmex_errorIterationFailure",
                      inDebug(R"({"message":"attempted iteration past end of container"})")));
    EXPECT_EQ(position, end);
  }
  list.reset();
  EXPECT_EQ(number(item, varmex_u32_SlotNumber), 6U);
  EXPECT_FALSE(container(session_, 0xFFFFFFFF));
  EXPECT_EQ(takeFailure(), notApplicable(R"({"attr":4294967295})"));
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

}  // namespace

}  // namespace test
