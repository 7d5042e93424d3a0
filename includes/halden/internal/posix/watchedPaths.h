#ifndef HALDEN_INTERNAL_POSIX_WATCHEDPATHS_H
#define HALDEN_INTERNAL_POSIX_WATCHEDPATHS_H

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "halden/internal/posix/changeEvents.h"

namespace halden {

// A path that sessions watch.
struct tWatchedPath {
  std::string path;
  unsigned users = 0;
  std::uint64_t changes = 0;  // that were told of
  bool isCurrent = false;     // nothing was told since its way was last watched
  unsigned round = 0;         // of watching it
  std::vector<int> watches;   // may repeat, or be gone
};

// All paths that a process watches, and the watches of each folder and each link on the way of
// each. Two locks: the caller holds one around the first group of functions, which ask the file
// system and may take long; what they share with the second group has the lock that is given to the
// constructor, and the caller holds that for the second group.
class tWatchedPaths {
 public:
  explicit tWatchedPaths(std::mutex& lock) : lock_(lock) {}

  tWatchedPath& use(const std::string& path);
  void leave(tWatchedPath& path);
  bool isEmpty() const { return paths_.empty(); }

  // Makes sure that there are events; when they had to be made, everything counts as changed. False
  // with the reason left with the system.
  bool prepareEvents();

  // Watches all that the path leads over now, unless nothing changed since the last time. What does
  // not exist is no failure. False with the reason left with the system.
  bool arm(tWatchedPath& path);

  // Second group. Whoever sleeps keeps the events that it sleeps on: others may take their place
  // meanwhile, and nothing is taken from the old ones.
  const std::shared_ptr<tChangeEvents>& events() const { return events_; }
  void take(tChangeEvents& events);
  void countChangeEverywhere();

  // Closes the events at any moment: in the child of a fork, in place of all else, and ahead of the
  // end.
  void abandon();

 private:
  struct tInterest {
    tWatchedPath* path;
    std::string name;  // in the watched folder; empty: the watched thing itself alone
    unsigned round;
  };
  class tArming;

  void addInterest(tWatchedPath& path, int watch, const std::string& name);
  void dropInterests(tWatchedPath& path, std::size_t watches, unsigned round);
  void countChange(int watch, const char* name, bool isEnd);

  std::mutex& lock_;
  std::shared_ptr<tChangeEvents> events_;
  std::atomic<tChangeEvents*> latest_{nullptr};  // the same, whole at every moment
  std::atomic<tChangeEvents*> coming_{nullptr};  // those that are being made
  std::map<std::string, std::unique_ptr<tWatchedPath>> paths_;
  std::map<int, std::vector<tInterest>> interests_;  // by watch
};

}  // namespace halden

#endif
