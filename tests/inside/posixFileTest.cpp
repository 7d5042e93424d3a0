#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

#include "corpxiTools/fileSystem/fileBytes.h"
#include "corpxiTools/fileSystem/registryKey.h"
#include "corpxiTools/fileSystem/utils.h"
#include "corpxiTools/iniFile.h"
#include "tests/support/posix/systemCalls.h"
#include "tests/support/testMachine.h"

namespace varmex {

namespace {

using test::tSystemCalls;
using test::tTestMachine;

void makeSocket(const char* path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(std::strlen(path), sizeof address.sun_path);
  std::strcpy(address.sun_path, path);
  const int socketOfTest = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(socketOfTest, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  close(socketOfTest);
}

constexpr std::pair<const char*, void (*)(const char* path)> kSpecialFiles[] = {
    {"pipe", [](const char* path) { ASSERT_EQ(mkfifo(path, 0600), 0); }},
    {"folder", [](const char* path) { ASSERT_EQ(mkdir(path, 0700), 0); }},
    {"device", [](const char* path) { ASSERT_EQ(symlink("/dev/zero", path), 0); }},
    {"socket", makeSocket},
};

// Neither is a special file opened, nor what takes the place of a regular one behind the look.
TEST(InputFile, isARegularOne) {
  for (const auto& [what, make] : kSpecialFiles) {
    const tTestMachine machine;
    make(machine.pxiSys().c_str());
    tSystemCalls calls;
    bool opened = false;
    calls.before["open"] = [&](const char*) { opened = true; };
    EXPECT_FALSE(tIniFile().read(machine.pxiSys().string())) << what;
    errno = 0;
    EXPECT_EQ(openInputStream(machine.pxiSys().c_str()), nullptr) << what;
    EXPECT_EQ(errno, ENXIO) << what;
    make((machine.folder() / "registry.reg").c_str());
    const auto root = tRegistryRoot::localMachine;
    EXPECT_EQ(tRegistryKey().open(root, "", tRegistryView::process), 0U) << what;
    EXPECT_EQ(tRegistryKey().open(root, "X", tRegistryView::process), unsigned{ENOENT}) << what;
    EXPECT_FALSE(opened) << what;
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
  std::FILE* const stream = openInputStream(machine.pxiSys().c_str());
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(fcntl(fileno(stream), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  std::fclose(stream);
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

TEST(FileExists, answersByTheSystemsError) {
  tTestMachine machine;
  machine.writePxiSys("x");
  const std::string file = machine.pxiSys().string();
  const struct {
    std::string path;
    int injected;
    std::int32_t expected;
  } cases[] = {
      {file + "x", 0, 0},    {file + "/x", 0, -50202}, {file + std::string(256, 'x'), 0, -50202},
      {file, ENOENT, 0},     {file, EACCES, -50207},   {file, EINVAL, -52005},
      {file, EPERM, -50202}, {file, ELOOP, -50202},    {file, EIO, -50202},
  };
  for (const auto& [path, injected, expected] : cases) {
    tSystemCalls calls;
    if (injected != 0) calls.failures = {{"stat", injected}};
    std::int32_t status = 0;
    EXPECT_FALSE(fileExists(path, status)) << path;
    EXPECT_EQ(status, expected) << path << ' ' << injected;
  }
}

TEST(FileBytes, followAFileThatChangesMeanwhile) {
  const tTestMachine machine;
  const std::filesystem::path path = machine.pxiSys();
  for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 100'000U}) {
    const std::string text(size, 'x');
    machine.write(path, text);
    EXPECT_EQ(contentOf(path), text);
    for (const std::size_t more : {1U, 5000U, 300'000U}) {
      machine.write(path, text);
      const std::string added(more, 'y');
      tSystemCalls calls;
      bool grown = false;
      calls.before["read"] = [&](const char*) {
        if (!std::exchange(grown, true)) std::ofstream(path, std::ios::app) << added;
      };
      EXPECT_EQ(contentOf(path), text + added) << size << '+' << more;
    }
    tSystemCalls calls;
    calls.before["read"] = [&](const char*) { std::filesystem::resize_file(path, size / 2); };
    machine.write(path, text);
    EXPECT_EQ(contentOf(path), text.substr(0, size / 2));
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
