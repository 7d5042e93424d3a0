#include "tests/support/testMachine.h"

#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

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
  std::ostringstream value;
  value << "\r\n[HKEY_LOCAL_MACHINE\\" << key << "]\r\n\"" << name << "\"=hex(" << std::hex << type
        << "):" << std::setfill('0');
  const char* separator = "";
  for (const unsigned char byte : bytes) {
    value << std::exchange(separator, ",") << std::setw(2) << unsigned{byte};
    // Texts of an export are in UTF-16.
    if (type == 1 || type == 2 || type == 7) value << ",00";
  }
  state_->registry += value.str();
  write(folder() / "registry.reg", state_->registry + "\r\n");
}

tExclusiveLock::tExclusiveLock(const fs::path& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0 || flock(file, LOCK_EX) != 0) throw std::runtime_error("no lock");
  held_ = {nullptr, [file](auto) { close(file); }};
}

// A thread that was woken by one that sleeps again by now must not pass for asleep: all of them
// have done nothing between two looks.
bool awaitSleep() {
  std::string before;
  for (int look = 0; look < 400; ++look) {
    std::string work;  // for how long each has been on a processor
    bool isQuiet = true;
    for (const fs::directory_entry& task : fs::directory_iterator("/proc/self/task")) {
      if (task.path().filename() == std::to_string(gettid())) continue;
      std::string state, worked;
      std::getline(std::ifstream(task.path() / "stat"), state);
      std::getline(std::ifstream(task.path() / "schedstat"), worked, ' ');
      isQuiet = isQuiet && state.find(") S ") != std::string::npos;
      work += task.path().string() + ' ' + worked + ' ';
    }
    if (isQuiet && look > 0 && work == before) return true;
    before = std::move(work);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

void runWithStack(std::size_t bytes, const std::function<void()>& work) {
  pthread_attr_t usual, own;
  pthread_getattr_default_np(&usual);
  pthread_attr_init(&own);
  pthread_attr_setstacksize(&own, bytes);
  pthread_setattr_default_np(&own);
  std::thread(work).join();
  pthread_setattr_default_np(&usual);
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
