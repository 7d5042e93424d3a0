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

TEST_F(tSession, tellsWhereItsFilesAre) {
  describe("", "");
  EXPECT_EQ(texts(session_, {varmex_str_PxiSysPath, varmex_str_PxieSysPath,
                             varmex_str_ConfigurationPath, varmex_str_Version}),
            machine_.pxiSys().string() + '|' + machine_.pxieSys().string() + '|' +
                machine_.configuration().string() + "|19.5.0");
}

TEST_F(tSession, refusesWhatItCannotDo) {
  describe(kOneChassis, "");
  const tItem item = chassis(4);
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

}  // namespace

}  // namespace test
