#include <gtest/gtest.h>

#include <cstdio>

#include "corpxiTools/fileSystem/utils.h"
#include "halden/internal/FileLockImpl.h"
#include "halden/tools/FileModificationTime.h"
#include "halden/tools/widePath.h"
#include "tests/support/status.h"
#include "tests/support/testMachine.h"

namespace varmex {

namespace {

using test::tExclusiveLock;
using test::tStatus;
using test::tTestMachine;

TEST(FileLock, isSharedAndNeverWaits) {
  tTestMachine machine;
  machine.writeConfiguration();
  const auto open = [&machine] {
    return std::unique_ptr<std::FILE, int (*)(std::FILE*)>(
        std::fopen(machine.configuration().string().c_str(), "r"), std::fclose);
  };
  const auto first = open(), second = open();
  halden::FileLockImpl one(first.get());
  halden::FileLockImpl two(second.get());
  {
    const tExclusiveLock lock(machine.configuration());
    EXPECT_FALSE(one.tryLockShared());
    one.unlock();
  }
  EXPECT_TRUE(one.tryLockShared());
  EXPECT_TRUE(two.tryLockShared());
  one.unlock();
  two.unlock();
  const tExclusiveLock lock(machine.configuration());
  EXPECT_FALSE(two.tryLockShared());
}

TEST(ModificationTime, tellsMissingFromUnreachable) {
  tTestMachine machine;
  tStatus status;
  std::uint64_t time = 7;
  EXPECT_FALSE(halden::readLastWriteTime(machine.pxiSys().string(), time, *status));
  EXPECT_EQ(status.code(), 0);
  machine.writePxiSys("x");
  EXPECT_TRUE(halden::readLastWriteTime(machine.pxiSys().string(), time, *status));
  EXPECT_GT(time, 7U);
  const auto missing = machine.folder() / "no such folder" / "file";
  EXPECT_FALSE(halden::readLastWriteTime(missing.string(), time, *status));
  EXPECT_EQ(status.code(), -52008);
  EXPECT_NE(status.text().find("\"ostrelerr_osFault\""), std::string::npos) << status.text();
  machine.writePxieSys("x");
  EXPECT_FALSE(halden::readLastWriteTime(machine.pxieSys().string(), time, *status))
      << "the status holds an error";
}

TEST(FileExists, honoursItsStatus) {
  tTestMachine machine;
  machine.writePxiSys("x");
  std::int32_t status = -1;
  EXPECT_FALSE(fileExists(machine.pxiSys().string(), status));
  tStatus record;
  EXPECT_EQ(getConfigurationPath(*record), machine.configuration().string());
  record.record().code = -1;
  EXPECT_EQ(getConfigurationPath(*record), "configuration.ini");
}

TEST(WidePath, takesBytesAsTheyCome) {
  const std::pair<const char*, std::u16string> cases[] = {{"", u""},
                                                          {"C:\\a", u"C:\\a"},
                                                          {"\xC3\xA4\xE2\x82\xAC", u"\u00E4\u20AC"},
                                                          {"\xF0\x9F\x98\x80!", u"\U0001F600!"},
                                                          {"\303A", u"\u00C1"},
                                                          {"\xFF\x80", u"\u00FF\u0080"},
                                                          {"\xE2\x82", u"\u2080"}};
  for (const auto& [path, expected] : cases) {
    tStatus status;
    std::u16string wide = u"before";
    EXPECT_TRUE(halden::widenPath(path, wide, *status));
    EXPECT_EQ(wide, expected) << path;
  }
}

}  // namespace

}  // namespace varmex
