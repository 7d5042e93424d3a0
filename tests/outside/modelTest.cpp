// Of the model what no table of cases tells: see modelCasesTest.cpp for the rest.

#include <array>
#include <nlohmann/json.hpp>
#include <thread>
#include <tuple>

#include "tests/support/model.h"

namespace test {

namespace {

using tSession = tModel;

TEST_F(tSession, tellsWhereItsFilesAre) {
  describe("", "");
  EXPECT_EQ(text(session_, varmex_str_PxiSysPath), machine_.pxiSys().string());
  EXPECT_EQ(text(session_, varmex_str_PxieSysPath), machine_.pxieSys().string());
  EXPECT_EQ(text(session_, varmex_str_ConfigurationPath), machine_.configuration().string());
}

TEST_F(tSession, refusesWhatItCannotDo) {
  describe("", kExpressChassis);
  const tItem item = chassis(1);
  ASSERT_TRUE(item) << status_.text();
  const tDeviceAddress address{0, 1, 2, 0};
  const tDeviceAddress reserved{1, 0, 0, 0};
  const auto expectRefused = [this](const std::string& words, auto function, auto... arguments) {
    EXPECT_FALSE(function(arguments..., status_));
    EXPECT_EQ(takeFailure(), refusal(words));
  };
  const std::string none = "InvalidHandle";
  expectRefused(none, varmex_openChassisByNumber, item.get(), 4U);
  expectRefused(none + R"( {"msg":"Handle is not a chassis handle."})", varmex_openSlotByNumber,
                session_.get(), 1U);
  // The arguments are looked at ahead of the handle.
  const std::string bad = "InvalidParameter ";
  expectRefused(bad + R"({"msg":"reserved parameter must be set to 0"})", varmex_openDeviceByAddr,
                nullptr, &reserved);
  expectRefused(bad + R"({"msg":"parameter addr is NULL"})", varmex_openDeviceByAddr, nullptr,
                nullptr);
  expectRefused(bad + R"({"message":"ItemIterator pointer cannot be null!"})",
                varmex_ItemIterator_nextItem, nullptr, nullptr);
  varmex_ItemIterator position = 0;
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
  EXPECT_EQ(takeFailure(),
            refusal(R"(InformationNotAvailable "An exception occurred in tIniFile")"));
}

// On a file that can't be read, and on the lock: each takes ten seconds, here at once.
TEST_F(tSession, givesUp) {
  std::filesystem::create_directories(machine_.pxiSys());
  std::thread other([this] {
    EXPECT_FALSE(tItem(varmex_openPXISession(0, status_)));
    const nlohmann::json detail = {{"varmex_debug", {{"path", machine_.pxiSys().string()}}}};
    EXPECT_EQ(takeFailure(), failure(-380764, "timeoutErrorCode", detail.dump()));
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
  const std::string full = (machine_.folder() / "x.ini").string();
  const std::string slash = std::filesystem::path("a/b").make_preferred().string().substr(1, 1);
  const std::string most(259, 'd');
  const std::string nothing = refusal(R"(InformationNotAvailable {"attribute":4102})");
  constexpr std::uint32_t kText = 1, kNumber = 4;
  for (const auto& [type, folder, file, found] : {
           std::tuple<std::uint32_t, std::string, std::string, std::string>{0, "", full, full},
           {0, "", "x.ini", nothing},
           {kText, "folder", "x.ini", "folder" + slash + "x.ini"},
           {kText, "folder" + slash, "x.ini", "folder" + slash + "x.ini"},
           {kText, "", "x.ini", "x.ini"},
           {kText, "folder", "\"\"", "folder"},
           {kText, most, "x", most + slash + "x"},
           {kText, most + "d", "x.ini", nothing},
           {kNumber, "abc", "x.ini", nothing},
       }) {
    const char* const key = "SOFTWARE\\PXISA\\CurrentVersion";
    const std::string ended = folder + '\0';
    if (type) machine_.setRegistryValue(key, "ChassisDescriptionFilePath", type, ended);
    describe("", kExpressChassis + ("DescriptionFile=" + file));
    EXPECT_EQ(orFailure(text(chassis(1), varmex_str_ChassisDescriptionFile)), found);
  }
}

TEST_F(tChassis, namesItsBusesByTheRegistry) {
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

using tDevices = tModel;

// Devices in slot 2 of chassis 1, whose names follow.
const std::string kNamed = "[System]\nChassisList=1\n" + std::string(kExpressChassis) +
                           "SlotList=2\n[Chassis1Slot2]\nAddressInfo=";

TEST_F(tDevices, resourceNames) {
  const std::pair<const char*, const char*> cases[] = {
      {"PXI0::5-3.1::INSTR", "5 3 1"},
      {"PXI5::3::1::INSTR", "5 3 1"},
      {"PXI1::2-3.0::INSTR;PXI1::2-3.1::INSTR+PXI1::2-4.0::INSTR", "2 3 0; 2 3 1; 2 4 0"},
      {";+PXI1::2-3.0::INSTR+;+;PXI1::2-3.0::INSTR;;", "2 3 0"},
      {"PXI1::3-4.0::INSTR+VISA::x;PXI2::5::6::INSTR", "2 5 6; 3 4 0"},
      {"PXI 1:: 2- 3.x::INSTR;PXI1::2-3.0::instr;PXI0::5-3::INSTR;::INSTR", ""},
      {"PXI 7::2-3.4 junk::INSTR", "2 3 4"},
      // Each piece of a name is missed.
      {"PXIx::5-3.1::INSTR;PXI0:5-3.1::INSTR;PXI0::x-3.1::INSTR;PXI0::5-x.1::INSTR", ""},
      {"PXI5:3::1::INSTR;PXI5::3:1::INSTR;PXI5::3::x::INSTR;PXI5::3::1::INST", ""},
      {"PXI0::5-3.1::INSTRx;PXI0::5-3.:::INSTR;PXI0::5-3.1", ""},
      // Functions of one device, and names that begin almost like theirs.
      {"PXI0::5-3.x::INSTR;PXI0::5-3.1::INSTR;PXI0::5-31.2::INSTR;PXI0::5-3.10::INSTR;PXI0::5-3.",
       "5 3 1; 5 3 10; 5 31 2"},
      {"PXI0::5-3.1::INSTR;PXI6::3::2::INSTR;PXI0::5-3.4::INSTR;PXI0::4-3.4::INSTR;PXI0::5-3::3",
       "4 3 4; 5 3 1; 5 3 4; 6 3 2"},
      {"PXI0::5-3.1::INSTR;PXI0::7-x.2::INSTR;PXI0::5-3.4::INSTR;PXI0::7-4;PXI0::5-3.6::INSTR",
       "5 3 1; 5 3 4; 5 3 6"},
      // A plus ends a name, also where it would be a sign.
      {"PXI0:: +5-3.1::INSTR;PXI0:: \t5- 3.-1::INSTR", "5 3 4294967295"}};
  for (const auto& [names, devices] : cases) {
    describe("", kNamed + names);
    EXPECT_EQ(listed(slot(1, 2), varmex_container_Devices,
                     {varmex_u32_DeviceBus, varmex_u32_DeviceNumber, varmex_u32_DeviceFunction}),
              devices)
        << names;
  }
  EXPECT_EQ(status_.code(), 0);
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
  for (std::uint32_t bus = 0; bus < levels; ++bus) {
    EXPECT_EQ(number(device(bus, 1, 0), varmex_u32_SlotNumber), 2U) << takeFailure();
    EXPECT_FALSE(device(bus, 2, 0)) << bus;
    varmex_releaseStatus(status_);
  }
}

using tContainers = tModel;

TEST_F(tContainers, areWalkedByPositionAndOutlivedByTheirItems) {
  describe("", kExpressChassis + std::string("SlotList=5,6,7\n[Chassis1Slot5]\n[Chassis1Slot6]\n"
                                             "[Chassis1Slot7]\n"));
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
    EXPECT_EQ(
        takeFailure(),
        refusal(R"(IterationFailure {"message":"attempted iteration past end of container"})"));
    EXPECT_EQ(position, end);
  }
  list.reset();
  EXPECT_EQ(number(item, varmex_u32_SlotNumber), 6U);
  EXPECT_FALSE(container(session_, 0xFFFFFFFF));
  EXPECT_EQ(takeFailure(), refusal(R"(AttributeNotApplicable {"attr":4294967295})"));
}

// A device of the first slot is in no device map, so that it may stand in another slot, too. Those
// in between come in the opposite order, a few or so many that they are sorted.
TEST_F(tContainers, listADeviceWhereItIsFirstMet) {
  for (const int between : {1, 100}) {
    std::string numbers;
    std::string slots;
    std::string expected = "900 1";
    for (int slot = 1; slot <= between + 2; ++slot) {
      const bool isSame = slot == 1 || slot == between + 2;
      const std::string number = std::to_string(slot);
      const std::string bus = std::to_string(isSame ? 900 : 800 - slot);
      numbers += (slot == 1 ? "" : ",") + number;
      slots += "[Chassis1Slot" + number + "]\nPCIDeviceNumber=1\nPCIBusNumber=" + bus + '\n';
      if (!isSame) expected.insert(0, bus + ' ' + number + "; ");
    }
    describe("[System]\nChassisList=1\n[Chassis1Slot2]\nPCISlotPath=a,b\n" + slots +
                 kClassicChassis + "SlotList=" + numbers,
             "");
    EXPECT_EQ(
        listed(session_, varmex_container_Devices, {varmex_u32_DeviceBus, varmex_u32_SlotNumber}),
        expected);
  }
}

}  // namespace

}  // namespace test
