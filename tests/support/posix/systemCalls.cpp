#include "tests/support/posix/systemCalls.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <utility>

namespace test {

namespace {

tSystemCalls* current = nullptr;

// Whether this call is to fail; its error is then set.
bool mustFail(const char* name, const char* path = "") {
  tSystemCalls* const calls = std::exchange(current, nullptr);
  if (!calls) return false;
  ++calls->counts[name];
  // It may take itself away.
  if (const auto hook = calls->before.find(name); hook != calls->before.end()) {
    const std::function<void(const char*)> act = hook->second;
    act(path);
  }
  current = calls;
  const auto planned = calls->failures.find(name);
  if (planned == calls->failures.end() || --planned->second.number > 0) return false;
  errno = planned->second.error;
  calls->failures.erase(planned);
  return true;
}

}  // namespace

const std::vector<tSystemCall>& systemCalls() {
  // ENOENT is not among them, where it is an answer and no failure. The build reads the names here.
  static const std::vector<tSystemCall> calls = {
      {"open", {EACCES, EMFILE, ENOMEM, EINTR, ELOOP}},
      {"read", {EIO, EINTR}},
      {"close", {EINTR, EIO}},
      {"fcntl", {ENOMEM}, {ENOMEM}},
      {"fstat", {EIO, ENOMEM}},
      {"stat", {EACCES, EIO, ENOMEM, ELOOP}},
      {"lstat", {EACCES, EIO}},
      {"readlink", {EINVAL, EACCES}},
      {"flock", {EINTR, EWOULDBLOCK, ENOLCK}, {ENOLCK}},
      {"inotify_init1", {EMFILE, ENOMEM}, {EMFILE, ENOMEM}},
      {"inotify_add_watch", {ENOSPC, EACCES}, {ENOSPC}},
      {"inotify_rm_watch", {EINVAL}},
      {"socketpair", {EMFILE}, {EMFILE}},
      {"poll", {EINTR, ENOMEM}, {ENOMEM}},
      {"recv", {EINTR, ECONNRESET}},
      {"send", {EPIPE, EAGAIN}},
      {"nanosleep", {EINTR}},
      {"dlopen", {ENOMEM}},
      {"dlsym", {ENOENT}},
      {"dlclose", {EINVAL}},
      {"dlinfo", {EINVAL}},
      {"dladdr1", {EINVAL}},
      {"getrandom", {EINTR, ENOSYS}},
      {"syscall", {ENOSYS, EINTR}}};
  return calls;
}

tSystemCalls::tSystemCalls() { current = this; }

tSystemCalls::~tSystemCalls() { current = nullptr; }

}  // namespace test

// WRAP(result, name, parameters, arguments, what a failing call answers). The linker sends the
// program's calls of each name here. WRAP_IF is for those that may fail under a condition alone.
#define WRAP_IF(condition, result, name, parameters, arguments, failed)           \
  extern "C" result __real_##name parameters;                                     \
  extern "C" result __wrap_##name parameters {                                    \
    return condition && test::mustFail(#name) ? failed : __real_##name arguments; \
  }
#define WRAP(...) WRAP_IF(true, __VA_ARGS__)

// RELEASE(name, type): the resource is gone even if the call tells of a failure.
#define RELEASE(name, type)                     \
  extern "C" int __real_##name(type resource);  \
  extern "C" int __wrap_##name(type resource) { \
    const bool fails = test::mustFail(#name);   \
    const int error = errno;                    \
    const int result = __real_##name(resource); \
    if (!fails) return result;                  \
    errno = error;                              \
    return -1;                                  \
  }

// It may fail for a file on a disk, not for what the kernel makes up.
extern "C" int __real_fstat(int file, struct stat* status);
extern "C" int __wrap_fstat(int file, struct stat* status) {
  const int result = __real_fstat(file, status);
  const bool isOnDisk = result == 0 && S_ISREG(status->st_mode) && status->st_size > 0;
  return isOnDisk && test::mustFail("fstat") ? -1 : result;
}

extern "C" int __real_open(const char* path, int flags, mode_t mode);
extern "C" int __wrap_open(const char* path, int flags, mode_t mode) {
  return test::mustFail("open", path) ? -1 : __real_open(path, flags, mode);
}

// clang-format off
WRAP_IF(operation != LOCK_UN, int, flock, (int file, int operation), (file, operation), -1)
WRAP_IF(operation == F_SETSIG, int, fcntl, (int file, int operation, long argument), (file, operation, argument), -1)
WRAP(ssize_t, read, (int file, void* bytes, std::size_t size), (file, bytes, size), -1)
WRAP(int, stat, (const char* path, struct stat* status), (path, status), -1)
WRAP(int, lstat, (const char* path, struct stat* status), (path, status), -1)
WRAP(ssize_t, readlink, (const char* path, char* text, std::size_t size), (path, text, size), -1)
WRAP(int, inotify_init1, (int flags), (flags), -1)
WRAP(int, inotify_add_watch, (int file, const char* path, std::uint32_t mask), (file, path, mask), -1)
WRAP(int, inotify_rm_watch, (int file, int watch), (file, watch), -1)
WRAP(int, socketpair, (int domain, int type, int protocol, int* pair), (domain, type, protocol, pair), -1)
WRAP(int, poll, (pollfd* files, unsigned long count, int timeout), (files, count, timeout), -1)
WRAP(ssize_t, recv, (int file, void* bytes, std::size_t size, int flags), (file, bytes, size, flags), -1)
WRAP(ssize_t, send, (int file, const void* bytes, std::size_t size, int flags), (file, bytes, size, flags), -1)
WRAP(int, nanosleep, (const timespec* time, timespec* left), (time, left), -1)
WRAP(void*, dlopen, (const char* path, int flags), (path, flags), nullptr)
WRAP(void*, dlsym, (void* library, const char* name), (library, name), nullptr)
WRAP(int, dlinfo, (void* library, int request, void* answer), (library, request, answer), -1)
WRAP(int, dladdr1, (const void* address, void* place, void** more, int flags), (address, place, more, flags), 0)
WRAP(ssize_t, getrandom, (void* bytes, std::size_t size, unsigned flags), (bytes, size, flags), -1)
WRAP(long, syscall, (long number, long a, long b, long c, long d, long e, long f), (number, a, b, c, d, e, f), -1)
RELEASE(close, int)
RELEASE(dlclose, void*)
// clang-format on
