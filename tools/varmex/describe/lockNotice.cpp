#include "tools/varmex/describe/lockNotice.h"

#include <chrono>
#include <cstdio>
#include <memory>

#include "corpxiTools/fileSystem/inputFile.h"
#include "corpxiTools/fileSystem/utils.h"
#include "halden/internal/nativeFileLock.h"

namespace tool {

namespace {

// Whether another program holds the lock on the description, without waiting for it.
bool isLockedElsewhere() {
  tStatusRecord status = varmex_makeStatus();
  const std::string path = varmex::getConfigurationPath(status);
  varmex_releaseStatus(&status);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(varmex::openInputStream(path.c_str()),
                                                             std::fclose);
  halden::tNativeFileLock lock;
  if (!file || !lock.attach(file.get())) return false;
  const halden::tLockAnswer answer = lock.tryLockShared();
  if (answer == halden::tLockAnswer::obtained) lock.unlock();
  return answer == halden::tLockAnswer::heldElsewhere;
}

}  // namespace

tLockNotice::tLockNotice() : since_(std::time(nullptr)), watcher_([this] { watch(); }) {}

tLockNotice::~tLockNotice() {
  {
    const std::lock_guard<std::mutex> held(mutex_);
    isOver_ = true;
  }
  ended_.notify_all();
  watcher_.join();
}

void tLockNotice::watch() {
  std::unique_lock<std::mutex> held(mutex_);
  if (ended_.wait_for(held, std::chrono::seconds(1), [this] { return isOver_; })) return;
  if (!isLockedElsewhere()) return;
  char time[16] = "";
  std::strftime(time, sizeof time, "%H:%M:%S", std::localtime(&since_));
  std::fprintf(stderr,
               "varmex: another program holds the lock on the description; waiting since %s, "
               "for at most 10 s\n",
               time);
}

}  // namespace tool
