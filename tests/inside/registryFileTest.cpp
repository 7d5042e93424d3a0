#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "corpxiTools/fileSystem/registryKey.h"
#include "ostrel/quarks/transientFailures.h"
#include "tests/support/posix/host.h"
#include "tests/support/posix/systemCalls.h"
#include "tests/support/testMachine.h"

namespace varmex {

namespace {

using test::tSystemCalls;

// A registry with one number, which is read through a key of its own each time.
class tRegistryFile : public testing::Test {
 protected:
  std::filesystem::path file() const { return machine_.folder() / "registry.reg"; }

  void write(std::uint32_t number) const { machine_.write(file(), textOf(number)); }

  static std::string textOf(std::uint32_t number) {
    return "Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\X]\n\"n\"=dword:" +
           std::to_string(number) + '\n';
  }

  // A text that has just been written may change again without showing it.
  static void settle() { std::this_thread::sleep_for(std::chrono::milliseconds(50)); }

  std::uint32_t open(const std::string& subkey = "X") {
    return key_.open(tRegistryRoot::localMachine, subkey, tRegistryView::process);
  }

  int number() {
    if (open() != 0) return -1;
    std::uint32_t type = 0;
    std::uint32_t value = 0;
    std::uint32_t size = sizeof value;
    return key_.queryValue("N", type, &value, size) == 0 ? static_cast<int>(value) : -2;
  }

  // The name of a subkey of the key that was opened last, or its error.
  std::string subkey(std::uint32_t index) {
    char name[256];
    const std::uint32_t error = key_.enumKey(index, name, sizeof name);
    return error == 0 ? name : std::strerror(static_cast<int>(error));
  }

  tRegistryKey key_;
  test::tTestMachine machine_;
};

TEST_F(tRegistryFile, isReadOncePerContent) {
  tSystemCalls calls;
  const auto expect = [&](int expected, int reads) {
    settle();
    calls.counts.clear();
    for (int n = 0; n < 3; ++n) EXPECT_EQ(number(), expected);
    EXPECT_EQ(calls.counts["open"], reads);
  };
  expect(-1, 0);
  write(1);
  expect(1, 1);
  expect(1, 0);
  write(2);
  expect(2, 1);
  // Another file with the same times and size.
  const auto time = std::filesystem::last_write_time(file());
  const auto other = machine_.folder() / "other";
  machine_.write(other, textOf(3));
  std::filesystem::last_write_time(other, time);
  std::filesystem::rename(other, file());
  expect(3, 1);
  // The same file with the same modification time and size.
  machine_.write(file(), textOf(4));
  std::filesystem::last_write_time(file(), time);
  expect(4, 1);
  std::filesystem::remove(file());
  expect(-1, 0);
  write(4);
  expect(4, 1);
  const test::tTestMachine another;
  EXPECT_EQ(number(), -1);
}

// Times of files go in steps: two contents may share one. And the file may be another one, for a
// moment, when it is read.
TEST_F(tRegistryFile, isNeverOutOfDate) {
  for (std::uint32_t n = 0; n < 10; ++n) {
    write(n);
    EXPECT_EQ(number(), static_cast<int>(n));
  }
  const auto link = [this](const char* name) {
    std::filesystem::remove(file());
    std::filesystem::create_symlink(machine_.folder() / name, file());
  };
  for (const std::uint32_t n : {7U, 8U})
    machine_.write(machine_.folder() / std::to_string(n), textOf(n));
  link("7");
  settle();
  tSystemCalls calls;
  calls.before["open"] = [&](const char*) { link("8"); };
  EXPECT_EQ(number(), 8);
  calls.before.clear();
  link("7");
  EXPECT_EQ(number(), 7);
}

TEST_F(tRegistryFile, thatCannotBeReadJustNowIsNotMissing) {
  const struct {
    const char* call;
    std::vector<int> errors;
    bool isMissing;
  } cases[] = {{"stat", {ENOENT, ENOTDIR, ELOOP, ENAMETOOLONG}, true},
               {"open", {EACCES, EPERM}, true},
               {"open", {EMFILE, ENFILE, EAGAIN}, false},
               {"stat", {EIO}, false},
               {"fstat", {EIO}, false},
               {"read", {EIO}, false}};
  for (const auto& [call, errors, isMissing] : cases) {
    for (const int error : errors) {
      write(1);
      const auto before = transientFailures.load();
      const auto answer = static_cast<std::uint32_t>(isMissing ? ENOENT : error);
      for (const char* subkey : {"X", ""}) {
        tSystemCalls calls;
        calls.failures = {{call, error}, {"close", EINTR}};
        EXPECT_EQ(open(subkey), isMissing && !*subkey ? 0 : answer) << call << ' ' << error;
      }
      EXPECT_EQ(transientFailures - before, isMissing ? 0U : 2U) << call << ' ' << error;
      EXPECT_EQ(number(), 1);
    }
  }
  for (const char* call : {"stat", "open", "read"}) {
    tSystemCalls calls;
    calls.failures = {{call, ENOMEM}};
    EXPECT_THROW(open(), std::bad_alloc) << call;
    EXPECT_EQ(number(), 1);
  }
}

TEST_F(tRegistryFile, isEnumeratedAsItWas) {
  machine_.write(file(), textOf(1) + "[HKEY_LOCAL_MACHINE\\Y]\n");
  ASSERT_EQ(open(""), 0U);
  EXPECT_EQ(subkey(0), "X");
  write(1);
  EXPECT_EQ(subkey(1), "Y");
  tSystemCalls calls;
  calls.failures = {{"stat", EIO}};
  EXPECT_EQ(subkey(0), std::strerror(EIO));
  EXPECT_EQ(subkey(1), std::strerror(ENOENT)) << "that ended the enumeration";
  EXPECT_EQ(subkey(0), "X");
  std::filesystem::remove(file());
  EXPECT_EQ(subkey(0), std::strerror(ENOENT));
}

// The child is forked by a thread that reads the text, or has it at hand: to the child it is locked
// for good, whatever the lost thread was doing to it.
TEST_F(tRegistryFile, isReadAgainByTheChildOfAThreadThatHasIt) {
  for (const bool isKept : {false, true}) {
    write(5);
    settle();
    EXPECT_TRUE(!isKept || number() == 5);
    tSystemCalls calls;
    calls.before[isKept ? "stat" : "read"] = [&](const char*) {
      calls.before.clear();
      test::inChild([this] {
        const tSystemCalls own;
        for (const int expected : {1, 1}) {
          EXPECT_EQ(number(), 5);
          EXPECT_EQ(own.counts.at("open"), expected) << "it is read again, and kept";
        }
      });
    };
    EXPECT_EQ(number(), 5);
    EXPECT_EQ(calls.counts["open"], isKept ? 0 : 1);
  }
}

TEST_F(tRegistryFile, hasViewsOfTheMachinesSoftwareAlone) {
  machine_.write(file(), textOf(1) + "[HKEY_USERS\\SOFTWARE\\X]\n");
  EXPECT_EQ(key_.open(tRegistryRoot::users, "SOFTWARE\\X", tRegistryView::bits32), 0U);
}

// Names up to the last that the buffers of the data tree hold.
TEST_F(tRegistryFile, longNamesEndAnEnumeration) {
  for (const std::size_t length : {254U, 255U, 256U, 300U}) {
    const std::string name(length, 'k');
    machine_.write(file(), textOf(1) + "[HKEY_LOCAL_MACHINE\\X\\" + name + "]\n");
    ASSERT_EQ(open(), 0U);
    EXPECT_EQ(subkey(0), length < 256 ? name : std::strerror(E2BIG)) << length;
    EXPECT_EQ(open("X\\" + name), 0U) << "a name of any length is found";
  }
}

}  // namespace

}  // namespace varmex
