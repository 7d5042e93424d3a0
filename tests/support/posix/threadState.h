#ifndef TESTS_SUPPORT_POSIX_THREADSTATE_H
#define TESTS_SUPPORT_POSIX_THREADSTATE_H

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

namespace test {

// What the system tells of a thread. One that is gone is not asleep.
struct tThreadState {
  // `task` is "/proc/PROCESS/task/THREAD".
  explicit tThreadState(const std::filesystem::path& task) {
    std::string text;
    std::getline(std::ifstream(task / "stat"), text);
    isAsleep = text.find(") S ") != std::string::npos;
    std::chrono::nanoseconds::rep times[2] = {};
    std::ifstream(task / "schedstat") >> times[0] >> times[1];
    worked = std::chrono::nanoseconds(times[0]);
    starved = std::chrono::nanoseconds(times[1]);
  }

  bool isAsleep;
  std::chrono::nanoseconds worked;   // on a processor
  std::chrono::nanoseconds starved;  // for want of one, until it last got one
};

}  // namespace test

#endif
