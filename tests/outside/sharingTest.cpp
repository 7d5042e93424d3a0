#include "tests/support/sharing.h"

#include "tests/support/threads.h"

namespace test {

namespace {

TEST_F(tSharing, timesStayTheSessionsOwn) {
  write("one");
  const tItem first = open();
  const auto before = std::filesystem::last_write_time(machine_.pxieSys());
  write("one");
  std::filesystem::last_write_time(machine_.pxieSys(), before + std::chrono::seconds(5));
  const tItem second = open();
  EXPECT_EQ(busName(first), busName(second)) << "the same bytes are in memory once";
  EXPECT_EQ(number(first, varmex_u32_SessionIsCurrent), 0U);
  EXPECT_EQ(number(second, varmex_u32_SessionIsCurrent), 1U);
}

TEST_F(tSharing, otherBytesAreReadAfresh) {
  const auto time = std::filesystem::file_time_type::clock::now();
  const auto writeAtThatTime = [&](const char* name) {
    write(name);
    std::filesystem::last_write_time(machine_.pxiSys(), time);
    std::filesystem::last_write_time(machine_.pxieSys(), time);
  };
  writeAtThatTime("one");
  const tItem first = open();
  for (const char* other : {"two", "onf", "on", "ones"}) {
    writeAtThatTime(other);
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

// Each beside what is in use of the other file.
TEST_F(tSharing, eitherFileAloneIsReadAfresh) {
  const auto listing = [](const std::string& chassis) {
    return "[System]\nChassisList=" + chassis + "\n[Chassis" + chassis +
           "]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=2\n[Chassis" + chassis +
           "Slot2]\nPCISlotPath=a,b\n";
  };
  std::vector<tItem> sessions;
  for (const auto& [classic, express] : {std::pair("1", "2"), {"1", "3"}, {"4", "3"}}) {
    machine_.writePxiSys(listing(classic));
    machine_.writePxieSys(listing(express));
    sessions.push_back(open());
    EXPECT_EQ(items(sessions.back(), varmex_container_Chassis).size(), 2U) << classic << express;
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
    const char* const names[] = {busName(sessions[at]), busName(sessions[at + kMany])};
    for (const char* name : names) EXPECT_EQ(name, std::to_string(1000 + n));
    EXPECT_EQ(names[0] == names[1], n < 64) << n;
  }
  // What was given up lets others share.
  sessions.clear();
  const tItem first = open();
  EXPECT_EQ(busName(first), busName(open()));
}

// Descriptions come and go while others look for them.
TEST_F(tSharing, opensAndClosesInThreads) {
  write("one");
  runInThreads(4, [](int) {
    for (int round = 0; round < 200; ++round) {
      const tItem sessions[] = {open(), open()};
      for (const tItem& session : sessions) EXPECT_STREQ(busName(session), "one");
    }
  });
  const tItem first = open();
  EXPECT_EQ(busName(first), busName(open()));
}

}  // namespace

}  // namespace test
