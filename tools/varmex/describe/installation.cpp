#include "tools/varmex/describe/installation.h"

#include <condition_variable>
#include <cstdio>
#include <ctime>
#include <memory>
#include <mutex>
#include <thread>

#include "corpxiTools/fileSystem/inputFile.h"
#include "corpxiTools/fileSystem/utils.h"
#include "halden/internal/nativeFileLock.h"
#include "tools/varmex/text/failures.h"

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

// Tells whoever waits why, when the opening of a session takes longer than a second because of the
// lock.
class tLockNotice {
 public:
  tLockNotice() : since_(std::time(nullptr)), watcher_([this] { watch(); }) {}
  tLockNotice(const tLockNotice&) = delete;
  tLockNotice& operator=(const tLockNotice&) = delete;
  ~tLockNotice() {
    {
      const std::lock_guard<std::mutex> held(mutex_);
      isOver_ = true;
    }
    ended_.notify_all();
    watcher_.join();
  }

 private:
  void watch() {
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

  std::time_t since_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool isOver_ = false;
  std::thread watcher_;
};

}  // namespace

void tInstallation::addSync(CLI::App& line) {
  line.add_flag("--sync", synchronizes_,
                "Have the PXI service library bring the description up to date first");
}

varmex::Session tInstallation::open() const {
  const tLockNotice notice;
  if (!synchronizes_) return varmex::Session();
  varmex::Session session = varmex::Session::synchronized();
  if (session.warning()) tellWarning(*session.warning());
  return session;
}

varmex::RoutingSession tInstallation::openLines(const tPciAddress& address,
                                                varmex::RoutingSession::Lines lines) const {
  return varmex::RoutingSession(address.bus, address.device, address.function, lines);
}

}  // namespace tool
