// Sessions on the same bytes share what they read: a text that two of them answer stands at one
// place in memory.

#include "tests/support/model.h"

namespace test {

namespace {

class tSharing : public tModel {
 protected:
  tItem open() { return tItem(varmex_openPXISession(0, status_)); }

  // What the left local bus of slot 2 is called.
  const char* busName(const tItem& session) {
    const tItem item(varmex_openChassisByNumber(session.get(), 1, status_));
    const tItem place(varmex_openSlotByNumber(item.get(), 2, status_));
    const char* const text =
        varmex_getStringAttribute(place.get(), varmex_str_LocalBusLeft, status_);
    EXPECT_TRUE(text) << status_.text();
    return text ? text : "";
  }

  void write(const std::string& name) {
    machine_.writePxieSys(described(name));
    machine_.writePxiSys("; classic\n");
  }
  static std::string described(const std::string& name) {
    return "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=2\n"
           "[Chassis1Slot2]\nSlotType=PXIePeripheralSlot\nLocalBusLeft=" +
           name + "\n";
  }
};

TEST_F(tSharing, theSameBytesAreInMemoryOnce) {
  write("one");
  const tItem first = open();
  write("one");
  const tItem second = open();
  EXPECT_EQ(busName(first), busName(second));
  EXPECT_STREQ(busName(second), "one");
}

TEST_F(tSharing, timesStayTheSessionsOwn) {
  write("one");
  const tItem first = open();
  const auto before = std::filesystem::last_write_time(machine_.pxieSys());
  write("one");
  std::filesystem::last_write_time(machine_.pxieSys(), before + std::chrono::seconds(5));
  const tItem second = open();
  EXPECT_EQ(busName(first), busName(second));
  EXPECT_EQ(number(first, varmex_u32_SessionIsCurrent), 0U);
  EXPECT_EQ(number(second, varmex_u32_SessionIsCurrent), 1U);
}

TEST_F(tSharing, otherBytesAreReadAfresh) {
  write("one");
  const tItem first = open();
  for (const char* other : {"two", "onf", "on", "ones"}) {
    write(other);
    EXPECT_STREQ(busName(open()), other);
  }
  write("one");
  machine_.writePxiSys("; clAssic\n");
  const tItem differsInTheClassicFile = open();
  EXPECT_NE(busName(first), busName(differsInTheClassicFile));
  EXPECT_STREQ(busName(first), "one");
  EXPECT_STREQ(busName(differsInTheClassicFile), "one");
  std::filesystem::remove(machine_.pxieSys());
  const tItem withoutTheFile = open();
  EXPECT_TRUE(items(withoutTheFile, varmex_container_Chassis).empty());
  EXPECT_EQ(status_.code(), 0) << status_.text();
}

TEST_F(tSharing, sessionsCloseInAnyOrder) {
  write("one");
  for (const std::size_t closedFirst : {0U, 1U, 2U}) {
    std::vector<tItem> sessions;
    for (int n = 0; n < 3; ++n) sessions.push_back(open());
    sessions.erase(sessions.begin() + static_cast<std::ptrdiff_t>(closedFirst));
    const tItem later = open();
    EXPECT_EQ(busName(sessions[0]), busName(later));
    sessions.clear();
    EXPECT_STREQ(busName(later), "one");
  }
}

// More descriptions at once than the library shares.
TEST_F(tSharing, anyNumberOfDescriptionsAreKeptApart) {
  constexpr int kMany = 80;
  std::vector<tItem> sessions;
  for (int n = 0; n < 2 * kMany; ++n) {
    write(std::to_string(1000 + n % kMany));
    sessions.push_back(open());
  }
  for (int n = 0; n < kMany; ++n) {
    const auto at = static_cast<std::size_t>(n);
    EXPECT_EQ(busName(sessions[at]), std::to_string(1000 + n));
    EXPECT_EQ(busName(sessions[at + kMany]), std::to_string(1000 + n));
    const bool isShared = busName(sessions[at]) == busName(sessions[at + kMany]);
    EXPECT_EQ(isShared, n < 64) << n;
  }
  // What frees a place lets others share.
  sessions.clear();
  const tItem first = open();
  EXPECT_EQ(busName(first), busName(open()));
}

}  // namespace

}  // namespace test
