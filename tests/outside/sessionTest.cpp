#include <nlohmann/json.hpp>
#include <thread>

#include "tests/support/model.h"

namespace test {

namespace {

using tSession = tModel;

constexpr const char* kOneChassis =
    "[System]\nChassisList = 4\n"
    "[Chassis4]\nVendor = Acme, Inc.\nModel = C8\nSlotList = 1,2\n"
    "[Chassis4Slot1]\nA = 1\n"
    "[Chassis4Slot2]\nPCISlotPath = 78,F0\n";

TEST_F(tSession, withoutFilesHoldsNothing) {
  describe("", "");
  ASSERT_TRUE(session_) << status_.text();
  EXPECT_EQ(number(session_, varmex_u32_ItemType), 0U);
  EXPECT_EQ(texts(session_, {varmex_str_PxiSysPath, varmex_str_PxieSysPath,
                             varmex_str_ConfigurationPath, varmex_str_Version}),
            machine_.pxiSys().string() + '|' + machine_.pxieSys().string() + '|' +
                machine_.configuration().string() + "|19.5.0");
  EXPECT_TRUE(items(session_, varmex_container_Chassis).empty());
  EXPECT_EQ(status_.code(), 0);
  EXPECT_FALSE(device(1, 2, 0));
  EXPECT_TRUE(failed(-380751, "varmex_errorUnknownItem",
                     R"({"varmex_debug":{"msg":"Failed to find the device"},)"
                     R"("bus":1,"device":2,"function":0,"type":"device"})"));
}

TEST_F(tSession, refusesWhatItCannotDo) {
  describe("", "");
  number(session_, 4242);
  EXPECT_TRUE(notApplicable(R"({"attribute":4242})"));
  number(session_, 0xFFFFFFFF);
  EXPECT_TRUE(notApplicable(R"({"attribute":-1})"));
  text(session_, 4);
  EXPECT_TRUE(notApplicable(R"({"attr":4})"));
  EXPECT_FALSE(varmex_duplicate(session_.get(), status_));
  EXPECT_TRUE(failed(-380754, "varmex_errorFeatureUnsupported",
                     inDebug(R"({"message":"VARMEX doesn't support cloning sessions."})")));
  EXPECT_FALSE(varmex_openContainingItem(session_.get(), 0, status_));
  EXPECT_TRUE(failed(-380754, "varmex_errorFeatureUnsupported",
                     inDebug(R"({"message":"Sessions don't have containing items."})")));
  EXPECT_EQ(text(session_, varmex_str_Version), "19.5.0");
}

TEST_F(tSession, checksHandles) {
  describe(kOneChassis, "");
  const tItem item = chassis(4);
  ASSERT_TRUE(item) << status_.text();
  const tDeviceAddress address{};
  const std::function<void()> calls[] = {
      [&] { EXPECT_EQ(varmex_getU32Attribute(nullptr, 0, status_), 0U); },
      [&] { EXPECT_FALSE(varmex_openSlotByNumber(nullptr, 1, status_)); },
      [&] { EXPECT_FALSE(varmex_openDeviceByAddr(nullptr, &address, status_)); },
      [&] { EXPECT_FALSE(varmex_openContainingItem(nullptr, 1, status_)); },
      [&] { EXPECT_FALSE(varmex_duplicate(nullptr, status_)); },
      [&] { EXPECT_FALSE(varmex_getItemContainer(nullptr, 1, status_)); },
      [&] { EXPECT_EQ(varmex_ItemIterator_begin(nullptr, status_), 0U); }};
  for (const auto& call : calls) {
    call();
    EXPECT_TRUE(failed(-380752, "varmex_errorInvalidHandle"));
  }
  EXPECT_FALSE(varmex_openChassisByNumber(item.get(), 4, status_));
  EXPECT_TRUE(failed(-380752, "varmex_errorInvalidHandle"));
  EXPECT_FALSE(varmex_openSlotByNumber(session_.get(), 1, status_));
  EXPECT_TRUE(failed(-380752, "varmex_errorInvalidHandle",
                     inDebug(R"({"msg":"Handle is not a chassis handle."})")));
  const tDeviceAddress reserved{1, 0, 0, 0};
  EXPECT_FALSE(varmex_openDeviceByAddr(nullptr, &reserved, status_));
  EXPECT_TRUE(failed(-380755, "varmex_errorInvalidParameter",
                     inDebug(R"({"msg":"reserved parameter must be set to 0"})")));
  EXPECT_FALSE(varmex_openDeviceByAddr(nullptr, nullptr, status_));
  EXPECT_TRUE(failed(-380755, "varmex_errorInvalidParameter",
                     inDebug(R"({"msg":"parameter addr is NULL"})")));
  varmex_close(nullptr);
  varmex_destroyItemContainer(nullptr);
}

TEST_F(tSession, readsTheListOfEitherSection) {
  describe(
      "[PXI System]\nChassisList = 4\n[Chassis4]\nVendor=V\nModel=M\nSlotList=2\n"
      "[Chassis4Slot2]\nPCISlotPath=1,2\n",
      "[PXI System]\nChassisList = 9\n");
  EXPECT_EQ(items(session_, varmex_container_Chassis).size(), 1U) << status_.text();
}

TEST_F(tSession, reportsWhatTheFilesHold) {
  const std::pair<std::string, const char*> cases[] = {
      {"[System]\nChassisList = 1,,2\n",
       "The number list in section System item ChassisList is invalid."},
      {"[System]\nOther = 1\n[PXI System]\nChassisList = 4\n",
       "Section System item: ChassisList not found"},
      {"[System]\nChassisList = 1\n", "Section Chassis1 item: SlotList not found"},
      {std::string("\xFF\xFE[\0", 4), "An exception occurred in tIniFile"}};
  for (const auto& [text, message] : cases) {
    describe(text, "");
    EXPECT_FALSE(session_);
    EXPECT_TRUE(notFound(message));
  }
}

TEST_F(tSession, isASnapshot) {
  describe(kOneChassis, "");
  machine_.writePxiSys("");
  const tItem item = chassis(4);
  ASSERT_TRUE(item) << status_.text();
  EXPECT_EQ(text(item, varmex_str_ChassisVendor), "Acme, Inc.");
}

// On a file that can't be read, and on the lock: each takes ten seconds, here at once.
TEST_F(tSession, givesUp) {
  std::filesystem::create_directories(machine_.pxiSys());
  std::thread other([this] {
    EXPECT_FALSE(tItem(varmex_openPXISession(0, status_)));
    const nlohmann::ordered_json detail = {{"path", machine_.pxiSys().string()}};
    EXPECT_TRUE(failed(-380764, "timeoutErrorCode", inDebug(detail.dump())));
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  machine_.writeConfiguration();
  const tExclusiveLock lock(machine_.configuration());
  tStatus status;
  EXPECT_FALSE(tItem(varmex_openPXISession(0, status)));
  EXPECT_TRUE(holdsFailure(status, -380763, "timeoutErrorCode"));
  other.join();
}

}  // namespace

}  // namespace test
