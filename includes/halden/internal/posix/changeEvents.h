#ifndef HALDEN_INTERNAL_POSIX_CHANGEEVENTS_H
#define HALDEN_INTERNAL_POSIX_CHANGEEVENTS_H

#include <atomic>
#include <functional>

#include "halden/internal/posix/ownDescriptor.h"

namespace halden {

// What the system tells a whole process of changes: one inotify instance, the news that mounts
// changed, and a bell that ends the sleep. What fails leaves its reason with the system.
class tChangeEvents {
 public:
  bool open();

  // False when the host closed any of the descriptors, or one serves no more.
  bool isWhole() const;

  // Watches what is at `path`, under a number that is the same for the same thing; negative on
  // failure. The last may be a link that is followed, a link itself, or must be a folder.
  enum class tKind { followed, itself, folder };
  int watch(const char* path, tKind kind);
  void unwatch(int watch);

  // Ends the sleep, or the next one.
  void ring();

  // Sleeps until there is something to take. The one place in which a waiting thread may be
  // cancelled, if it lets itself be. False on failure.
  bool sleep(int timeoutMs);

  // Takes what there is, after a sleep. `changed` is called with each watch that tells something
  // and the name that it tells it of, empty for the watched thing itself. False when nothing is
  // known any more of what happened before: everything may have changed.
  using tChanged = std::function<void(int watch, const char* name, bool isEnd)>;
  bool take(const tChanged& changed);

  // Closes what is still ours. Safe in the child of a fork.
  void release();

 private:
  bool readEvents(const tChanged& changed);
  bool isDrained(ssize_t size);

  tOwnDescriptor inotify_;
  tOwnDescriptor bell_;
  tOwnDescriptor rope_;         // of the bell: closing it rings for good
  tOwnDescriptor mounts_;       // none where the system does not show them
  bool mountsChanged_ = false;  // seen by the last sleep
  std::atomic<bool> isBroken_{false};
};

}  // namespace halden

#endif
