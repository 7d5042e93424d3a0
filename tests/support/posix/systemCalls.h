#ifndef TESTS_SUPPORT_POSIX_SYSTEMCALLS_H
#define TESTS_SUPPORT_POSIX_SYSTEMCALLS_H

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace test {

// A system call that the library makes, and the errors that it may come to.
struct tSystemCall {
  std::string name;
  std::vector<int> errors;
  std::vector<int> told{};  // of these, what a caller is always told of
};
const std::vector<tSystemCall>& systemCalls();

// As long as one lives it stands between this program's own code and those calls, but for what its
// hooks do themselves. One thread uses it.
class tSystemCalls {
 public:
  tSystemCalls();
  ~tSystemCalls();
  tSystemCalls(const tSystemCalls&) = delete;
  tSystemCalls& operator=(const tSystemCalls&) = delete;

  // What goes ahead of each call of that name; the path is that of "open".
  std::map<std::string, std::function<void(const char* path)>> before;

  // The next call of that name fails with that error, or the one of that number from now on, once.
  struct tFailure {
    tFailure(int why, long which = 1) : error(why), number(which) {}
    int error;
    long number;
  };
  std::map<std::string, tFailure> failures;

  // How often each was called.
  std::map<std::string, int> counts;
};

}  // namespace test

#endif
