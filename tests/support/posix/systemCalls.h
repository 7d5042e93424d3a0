#ifndef TESTS_SUPPORT_POSIX_SYSTEMCALLS_H
#define TESTS_SUPPORT_POSIX_SYSTEMCALLS_H

#include <functional>
#include <map>
#include <string>

namespace test {

// As long as one lives it stands between this program's own code and the system calls "open",
// "read", "stat" and "fstat", which the linker wraps. One thread uses it.
class tSystemCalls {
 public:
  tSystemCalls();
  ~tSystemCalls();
  tSystemCalls(const tSystemCalls&) = delete;
  tSystemCalls& operator=(const tSystemCalls&) = delete;

  std::function<void(const char* path)> beforeOpen;
  std::function<void()> beforeRead;
  std::function<void()> beforeStat;

  // The next call of that name fails with that error, once.
  std::map<std::string, int> failures;

  // How often each was called.
  std::map<std::string, int> counts;
};

}  // namespace test

#endif
