#include "tests/support/testMachine.h"

#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <thread>
#include <utility>

#include "tests/support/posix/threadState.h"

namespace test {

namespace fs = std::filesystem;

struct tTestMachine::tState {
  fs::path root;
  std::string registry = "Windows Registry Editor Version 5.00\r\n";
};

tTestMachine::tTestMachine() : state_(std::make_unique<tState>()) {
  std::string name = (fs::temp_directory_path() / "varmex-test-XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
  state_->root = name;
  fs::create_directories(folder());
  fs::create_directories(state_->root / "var/lib");
  setenv("VARMEX_FSROOT", name.c_str(), 1);
}

tTestMachine::~tTestMachine() {
  unsetenv("VARMEX_FSROOT");
  std::error_code ignored;
  fs::remove_all(state_->root, ignored);
}

fs::path tTestMachine::folder() const { return state_->root / "etc/pxi"; }

fs::path tTestMachine::configuration() const {
  return state_->root / "var/lib/PXISA/configuration.ini";
}

void tTestMachine::setRegistryValue(const std::string& key, const std::string& name,
                                    std::uint32_t type, const std::string& bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string data;
  const auto addByte = [&data](unsigned char byte) {
    if (!data.empty()) data += ',';
    data += {kDigits[byte >> 4], kDigits[byte & 15]};
  };
  for (const char byte : bytes) {
    addByte(static_cast<unsigned char>(byte));
    // Texts of an export are in UTF-16.
    if (type == 1 || type == 2 || type == 7) addByte(0);
  }
  char kind[16];
  std::snprintf(kind, sizeof kind, "hex(%x):", type);
  state_->registry += "\r\n[HKEY_LOCAL_MACHINE\\" + key + "]\r\n\"" + name + "\"=" + kind + data;
  write(folder() / "registry.reg", state_->registry + "\r\n");
}

struct tExclusiveLock::tState {
  int file;
};

tExclusiveLock::tExclusiveLock(const fs::path& path)
    : state_(new tState{open(path.c_str(), O_RDONLY | O_CLOEXEC)}) {
  if (state_->file < 0 || flock(state_->file, LOCK_EX) != 0) throw std::runtime_error("no lock");
}

tExclusiveLock::~tExclusiveLock() { close(state_->file); }

// A thread that was woken by one that sleeps again by now must not pass for asleep: all of them
// have done nothing between two looks.
bool awaitSleep() {
  using tWork = std::map<fs::path, std::chrono::nanoseconds>;
  tWork before;
  for (int look = 0; look < 400; ++look) {
    tWork work;
    bool isQuiet = true;
    for (const fs::directory_entry& task : fs::directory_iterator("/proc/self/task")) {
      if (task.path().filename() == std::to_string(gettid())) continue;
      const tThreadState state(task);
      isQuiet = isQuiet && state.isAsleep;
      work[task] = state.worked;
    }
    if (isQuiet && look > 0 && work == before) return true;
    before = std::move(work);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

void runWithStack(std::size_t bytes, const std::function<void()>& work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, bytes);
  pthread_t thread;
  const auto run = [](void* argument) -> void* {
    (*static_cast<const std::function<void()>*>(argument))();
    return nullptr;
  };
  void* const argument = const_cast<std::function<void()>*>(&work);
  if (pthread_create(&thread, &attributes, run, argument) != 0) {
    throw std::runtime_error("no thread");
  }
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

std::ptrdiff_t memoryInUse() { return static_cast<std::ptrdiff_t>(mallinfo2().uordblks); }

// A stream is written last.
void endLate() {
  const auto write = [](void*, const char*, std::size_t size) -> ssize_t {
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    return static_cast<ssize_t>(size);
  };
  std::fputc('x', fopencookie(nullptr, "w", {nullptr, write, nullptr, nullptr}));
}

}  // namespace test
