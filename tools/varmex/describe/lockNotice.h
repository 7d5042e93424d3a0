#ifndef TOOLS_VARMEX_DESCRIBE_LOCKNOTICE_H
#define TOOLS_VARMEX_DESCRIBE_LOCKNOTICE_H

#include <condition_variable>
#include <ctime>
#include <mutex>
#include <thread>

namespace tool {

// Tells whoever waits why, when what goes on while it lives takes longer than a second because
// another program holds the lock on the description or a file of it can't be opened.
class tLockNotice {
 public:
  tLockNotice();
  tLockNotice(const tLockNotice&) = delete;
  tLockNotice& operator=(const tLockNotice&) = delete;
  ~tLockNotice();

 private:
  void watch();

  std::time_t since_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool isOver_ = false;
  std::thread watcher_;
};

}  // namespace tool

#endif
