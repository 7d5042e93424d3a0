#ifndef TESTS_INJECTION_POSIX_SYSTEMCALLS_H
#define TESTS_INJECTION_POSIX_SYSTEMCALLS_H

#include <string>
#include <vector>

namespace test {

// A system call that the library makes, and the errors that it may come to.
struct tSystemCall {
  std::string name;
  std::vector<int> errors;
};
const std::vector<tSystemCall>& systemCalls();

// Makes the n-th call of that name from now on fail with the error, once. Calls count in all
// threads, as far as the program's own objects make them.
void failSystemCall(const std::string& name, long n, int error);

// Ends it; whether it came to the failure.
bool systemCallFailed();

}  // namespace test

#endif
