#include "tools/varmex/describe/lockNotice.h"

#include <chrono>
#include <cstdio>

#include "corpxiTools/fileSystem/fileStatus.h"
#include "corpxiTools/fileSystem/inputFile.h"
#include "corpxiTools/fileSystem/utils.h"
#include "halden/internal/nativeFileLock.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/shownPaths.h"

namespace tool {

namespace {

// Whether another program holds the lock on the description, without waiting for it.
bool isLockedElsewhere() {
  const varmex::tInputFile file(configurationPath().c_str());
  halden::tNativeFileLock lock;
  if (!file.isOpen() || !lock.attach(file.descriptor())) return false;
  const halden::tLockAnswer answer = lock.tryLockShared();
  if (answer == halden::tLockAnswer::obtained) lock.unlock();
  return answer == halden::tLockAnswer::heldElsewhere;
}

// What the library waits for: the lock, or a file that is there and can't be opened.
std::string obstacle() {
  if (isLockedElsewhere()) return "another program holds the lock on the description";
  for (const std::string& path :
       {configurationPath(), varmex::getPxiSysPath(), varmex::getPxieSysPath()}) {
    const bool isThere = varmex::queryFileStatus(path.c_str()).code != varmex::kFileNotFound;
    if (!isThere || varmex::tInputFile(path.c_str()).isOpen()) continue;
    return withShownPaths(path) + " can't be opened";
  }
  return {};
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
  const std::string reason = obstacle();
  if (reason.empty()) return;
  char time[16] = "";
  std::strftime(time, sizeof time, "%H:%M:%S", std::localtime(&since_));
  std::fprintf(stderr, "varmex: %s; waiting since %s, for at most 10 s\n", visible(reason).c_str(),
               time);
}

}  // namespace tool
