#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "corpxiTools/fileSystem/fileBytes.h"
#include "corpxiTools/fileSystem/registryKey.h"
#include "corpxiTools/fileSystem/utils.h"
#include "corpxiTools/iniFile.h"
#include "halden/tools/FileModificationTime.h"
#include "tests/support/posix/systemCalls.h"
#include "tests/support/status.h"
#include "tests/support/testMachine.h"

namespace varmex {

namespace {

using test::tSystemCalls;
using test::tTestMachine;

constexpr std::pair<const char*, void (*)(const char* path)> kSpecialFiles[] = {
    {"pipe", [](const char* path) { ASSERT_EQ(mkfifo(path, 0600), 0); }},
    {"folder", [](const char* path) { ASSERT_EQ(mkdir(path, 0700), 0); }},
    {"device", [](const char* path) { ASSERT_EQ(symlink("/dev/zero", path), 0); }},
    {"socket", [](const char* path) { ASSERT_EQ(mknod(path, S_IFSOCK | 0600, 0), 0); }},
};

// Neither is a special file opened, nor what takes the place of a regular one behind the look.
TEST(InputFile, isARegularOne) {
  for (const auto& [what, make] : kSpecialFiles) {
    const tTestMachine machine;
    make(machine.pxiSys().c_str());
    tSystemCalls calls;
    EXPECT_FALSE(tIniFile().read(machine.pxiSys().string())) << what;
    errno = 0;
    EXPECT_FALSE(tInputFile(machine.pxiSys().c_str()).isOpen()) << what;
    EXPECT_EQ(errno, ENXIO) << what;
    make((machine.folder() / "registry.reg").c_str());
    const auto root = tRegistryRoot::localMachine;
    EXPECT_EQ(tRegistryKey().open(root, "", tRegistryView::process), 0U) << what;
    EXPECT_EQ(tRegistryKey().open(root, "X", tRegistryView::process), unsigned{ENOENT}) << what;
    EXPECT_EQ(calls.counts["open"], 0) << what;
    machine.write(machine.pxieSys(), "[A]\n");
    calls.before["open"] = [&](const char* path) {
      if (path != machine.pxieSys()) return;
      std::filesystem::remove(path);
      std::filesystem::rename(machine.pxiSys(), path);
    };
    EXPECT_FALSE(tIniFile().read(machine.pxieSys().string())) << what;
  }
}

TEST(InputFile, isNotInherited) {
  const tTestMachine machine;
  machine.write(machine.pxiSys(), "[A]\n");
  const tInputFile file(machine.pxiSys().c_str());
  EXPECT_EQ(fcntl(file.descriptor(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

std::string contentOf(const std::filesystem::path& path) {
  tInputFile file(path.c_str());
  tFileBytes content;
  tContentDigester digester;
  if (!file.isOpen() || !readWholeFile(file, 3, content, &digester)) return "failed";
  tContentDigester once;
  once.add({content.bytes.get(), content.size});
  EXPECT_EQ(digester.digest(), once.digest());
  EXPECT_EQ(std::string(content.bytes.get() + content.size, 3), std::string(3, '\0'));
  return {content.bytes.get(), content.size};
}

TEST(FileStatus, answersByTheSystemsError) {
  constexpr int kNobodys = 9999;
  tTestMachine machine;
  machine.writePxiSys("x");
  const std::string file = machine.pxiSys().string();
  const struct {
    std::string path;
    int injected;
    std::int32_t existence, time;
  } cases[] = {{file + "x", 0, 0, 0},
               {file + "/x", 0, -50202, -52008},
               {file + std::string(256, 'x'), 0, -50202, -52008},
               {file, ENOENT, 0, 0},
               {file, EACCES, -50207, -52026},
               {file, EINVAL, -52005, -52008},
               {file, EPERM, -50202, -52008},
               {file, ELOOP, -50202, -52008},
               {file, kNobodys, -50202, -52008}};
  for (const auto& [path, injected, existence, time] : cases) {
    tSystemCalls calls;
    if (injected != 0) calls.failures = {{"stat", injected}};
    std::int32_t code = 0;
    EXPECT_FALSE(fileExists(path, code)) << path;
    EXPECT_EQ(code, existence) << path << ' ' << injected;
    if (injected != 0) calls.failures = {{"stat", injected}};
    test::tStatus status;
    std::uint64_t written = 0;
    EXPECT_FALSE(halden::readLastWriteTime(path, written, *status)) << path;
    EXPECT_EQ(status.code(), time) << path << ' ' << injected;
    const bool isExplained = status.text().find("\"string\":\"") != std::string::npos;
    EXPECT_EQ(isExplained, time != 0 && injected != kNobodys) << status.text();
  }
}

TEST(FileBytes, followAFileThatChangesMeanwhile) {
  const tTestMachine machine;
  for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 100'000U}) {
    const std::string text(size, 'x');
    for (const std::string& changed :
         {text, text.substr(0, size / 2), text + 'y', text + std::string(5000, 'y'),
          text + std::string(300'000, 'y')}) {
      machine.write(machine.pxiSys(), text);
      tSystemCalls calls;
      calls.before["read"] = [&](const char*) { machine.write(machine.pxiSys(), changed); };
      EXPECT_EQ(contentOf(machine.pxiSys()), changed);
    }
  }
}

TEST(FileBytes, haveABoundWithoutASize) {
  EXPECT_TRUE(contentOf("/proc/version").ends_with('\n'));
  constexpr std::size_t kMost = 16 << 20;
  const tTestMachine machine;
  for (const std::size_t size : {kMost, kMost + 1}) {
    machine.write(machine.pxiSys(), "");
    tInputFile file(machine.pxiSys().c_str());
    std::filesystem::resize_file(machine.pxiSys(), size);
    tSystemCalls calls;
    calls.failures = {{"fstat", EIO}};
    calls.before["read"] = [&](const char*) { calls.failures = {{"fstat", EIO}}; };
    tFileBytes content;
    EXPECT_EQ(readWholeFile(file, 0, content), size == kMost);
    EXPECT_EQ(errno == EFBIG, size != kMost);
  }
}

TEST(FileBytes, outlastInterruptions) {
  const tTestMachine machine;
  machine.write(machine.pxiSys(), "text");
  tSystemCalls calls;
  calls.failures = {{"open", EINTR}, {"read", EINTR}};
  EXPECT_EQ(contentOf(machine.pxiSys()), "text");
  for (const char* call : {"stat", "open", "fstat", "read"}) {
    calls.failures = {{call, EIO}};
    EXPECT_EQ(contentOf(machine.pxiSys()), "failed") << call;
  }
}

}  // namespace

}  // namespace varmex
