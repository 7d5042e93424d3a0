#include "corpxiTools/fileSystem/posix/registryFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <new>
#include <string>

#include "corpxiTools/fileSystem/posix/fileSystemRoot.h"
#include "ostrel/quarks/forkProofLock.h"
#include "ostrel/quarks/transientFailures.h"
#include "ostrel/quarks/untilUnload.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

constexpr const char* kRegistryFile = "/etc/pxi/registry.reg";

constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::int64_t inNanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * kNanoseconds + time.tv_nsec;
}

// What tells one content of a file from another.
struct tStamp {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  std::int64_t modified = 0;
  std::int64_t changed = 0;

  bool operator==(const tStamp&) const = default;
};

bool readStamp(const std::string& path, tStamp& stamp) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return false;
  stamp = {status.st_dev, status.st_ino, status.st_size, inNanoseconds(status.st_mtim),
           inNanoseconds(status.st_ctim)};
  return true;
}

// Whether a write from now on shows in the stamp. The clock of files goes in steps.
bool tellsLaterWrites(const tStamp& stamp) {
  constexpr std::int64_t kSteps = 20'000'000;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return std::abs(inNanoseconds(now) - stamp.changed) > kSteps;
}

// 0 for a file that is not there, or not for us.
std::uint32_t errorOf(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case EACCES:
    case EPERM:
    case ELOOP:
    case ENAMETOOLONG:
    case ENXIO: return 0;
    case ENOMEM: throw std::bad_alloc();
    default: ++transientFailures; return static_cast<std::uint32_t>(error);
  }
}

struct tKeptText {
  std::string path;
  tStamp stamp;
  std::shared_ptr<const tRegistryText> text;
};

struct tKeptRegistry {
  tForkProofLock lock;
  tKeptText kept;
};

tUntilUnload<tKeptRegistry> registry;

// Reads the file that has that stamp. It is kept if no change can have been missed.
std::uint32_t readText(const std::string& path, const tStamp& stamp, tKeptText& kept,
                       std::shared_ptr<const tRegistryText>& text) {
  kept = {};
  const bool isSettled = tellsLaterWrites(stamp);
  tFileBytes content;
  {
    tInputFile file(path.c_str());
    if (!file.isOpen() || !readWholeFile(file, 0, content)) return errorOf(errno);
  }
  text = std::make_shared<const tRegistryText>(std::move(content));
  tStamp after;
  if (isSettled && readStamp(path, after) && after == stamp) kept = {path, stamp, text};
  return 0;
}

}  // namespace

std::uint32_t readRegistry(std::shared_ptr<const tRegistryText>& text) {
  text = nullptr;
  const std::string path = fileSystemRoot() + kRegistryFile;
  const tForkProofLock::tHeld held(registry->lock);
  tKeptText& kept = registry->kept;
  // The thread that held the lock may have been in the middle of a change.
  if (held.wasAbandoned()) std::construct_at(&kept);
  tStamp stamp;
  if (!readStamp(path, stamp)) return errorOf(errno);
  if (kept.text && kept.path == path && kept.stamp == stamp) {
    text = kept.text;
    return 0;
  }
  return readText(path, stamp, kept, text);
}

}  // namespace varmex::inline nCORPXITOOLS000
