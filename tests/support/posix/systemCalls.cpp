#include "tests/support/posix/systemCalls.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <utility>

namespace {

test::tSystemCalls* current = nullptr;

// Whether the call is to fail. What a hook does itself is left alone.
template <class Hook>
bool intercept(const char* name, Hook hook) {
  test::tSystemCalls* const calls = std::exchange(current, nullptr);
  if (!calls) return false;
  ++calls->counts[name];
  hook(*calls);
  const auto failure = calls->failures.extract(name);
  current = calls;
  if (failure) errno = failure.mapped();
  return !failure.empty();
}

void doNothing(test::tSystemCalls&) {}

// One that may take itself away.
void call(std::function<void()> hook) {
  if (hook) hook();
}

}  // namespace

extern "C" {

int __real_open(const char* path, int flags, ...);
ssize_t __real_read(int descriptor, void* buffer, size_t size);
int __real_stat(const char* path, struct stat* status);
int __real_fstat(int descriptor, struct stat* status);

int __wrap_open(const char* path, int flags, ...) {
  const auto hook = [path](test::tSystemCalls& calls) {
    if (calls.beforeOpen) calls.beforeOpen(path);
  };
  return intercept("open", hook) ? -1 : __real_open(path, flags, 0600);
}

ssize_t __wrap_read(int descriptor, void* buffer, size_t size) {
  return intercept("read", [](test::tSystemCalls& calls) { call(calls.beforeRead); })
             ? -1
             : __real_read(descriptor, buffer, size);
}

int __wrap_stat(const char* path, struct stat* status) {
  return intercept("stat", [](test::tSystemCalls& calls) { call(calls.beforeStat); })
             ? -1
             : __real_stat(path, status);
}

int __wrap_fstat(int descriptor, struct stat* status) {
  return intercept("fstat", doNothing) ? -1 : __real_fstat(descriptor, status);
}

}  // extern "C"

namespace test {

tSystemCalls::tSystemCalls() { current = this; }

tSystemCalls::~tSystemCalls() { current = nullptr; }

}  // namespace test
