#include "halden/internal/posix/watchedPaths.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "halden/internal/posix/pathWalk.h"

namespace halden {

namespace {

using tKind = tChangeEvents::tKind;
using tLock = std::lock_guard<std::mutex>;

// What ends a way, and is seen when the file itself is looked at.
bool endsWay(int error) {
  return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
}

std::string folderOf(const std::string& path) {
  const std::size_t separator = path.rfind('/');
  return separator == std::string::npos ? "." : path.substr(0, separator + 1);
}

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

// One watching of a path's way. Each watch stands ahead of the look at what it watches, so that no
// change falls between the two.
class tWatchedPaths::tArming final : public iPathVisitor {
 public:
  tArming(tWatchedPaths& paths, tWatchedPath& path) : paths_(paths), path_(path) {}

  bool visitEntry(const std::string& folder, const std::string& name) override {
    return watch(folder, tKind::folder, name) || isPassable();
  }
  bool visitItself(const std::string& path) override {
    return watch(path, tKind::itself, "") || isPassable();
  }

  // The folder and the file as the system finds them: it knows links that lead elsewhere than they
  // say.
  bool visitEnd() {
    if (!watch(folderOf(path_.path), tKind::folder, nameOf(path_.path))) {
      return endsWay(errno) || (errno == EACCES && isOutOfReach());
    }
    return watch(path_.path, tKind::followed, "") || isPassable();
  }

 private:
  bool watch(const std::string& path, tKind kind, const std::string& name) {
    const int number = paths_.events_->watch(path.c_str(), kind);
    if (number < 0) return false;
    const tLock held(paths_.lock_);
    paths_.addInterest(path_, number, name);
    return true;
  }

  // A folder that may be passed but not read can't be watched; what is below it can.
  static bool isPassable() { return endsWay(errno) || errno == EACCES; }

  // Then the look at the file tells of it.
  bool isOutOfReach() const {
    struct stat file {};
    const bool isDenied = stat(path_.path.c_str(), &file) != 0 && errno == EACCES;
    errno = EACCES;
    return isDenied;
  }

  tWatchedPaths& paths_;
  tWatchedPath& path_;
};

tWatchedPath& tWatchedPaths::use(const std::string& path) {
  auto fresh = std::make_unique<tWatchedPath>();
  fresh->path = path;
  const tLock held(lock_);
  tWatchedPath& one = *paths_.try_emplace(path, std::move(fresh)).first->second;
  ++one.users;
  return one;
}

void tWatchedPaths::leave(tWatchedPath& path) {
  const tLock held(lock_);
  if (--path.users > 0) return;
  dropInterests(path, path.watches.size(), path.round + 1);
  paths_.erase(paths_.find(path.path));
}

bool tWatchedPaths::prepareEvents() {
  if (events_ && events_->isWhole()) return true;
  auto fresh = std::make_shared<tChangeEvents>();
  coming_ = fresh.get();
  if (!fresh->open()) {
    coming_ = nullptr;
    return false;
  }
  const tLock held(lock_);
  latest_ = fresh.get();
  coming_ = nullptr;
  events_.swap(fresh);
  if (fresh) fresh->ring();
  interests_.clear();
  for (auto& [name, path] : paths_) path->watches.clear();
  countChangeEverywhere();
  return true;
}

bool tWatchedPaths::arm(tWatchedPath& path) {
  std::size_t former = 0;
  {
    const tLock held(lock_);
    if (path.isCurrent) return true;
    ++path.round;
    path.isCurrent = true;  // whatever is told of from here on makes it false again
    former = path.watches.size();
  }
  const auto giveUp = [&, this] {
    const tLock held(lock_);
    path.isCurrent = false;
  };
  try {
    tArming arming(*this, path);
    if (walkPath(path.path, arming) && arming.visitEnd()) {
      const tLock held(lock_);
      dropInterests(path, former, path.round);
      return true;
    }
  } catch (...) {
    giveUp();
    throw;
  }
  const int reason = errno;
  giveUp();
  errno = reason;
  return false;
}

void tWatchedPaths::addInterest(tWatchedPath& path, int watch, const std::string& name) {
  path.watches.push_back(watch);
  std::vector<tInterest>& interests = interests_[watch];
  const auto known = std::find_if(interests.begin(), interests.end(), [&](const tInterest& one) {
    return one.path == &path && one.name == name;
  });
  if (known != interests.end()) {
    known->round = path.round;
  } else {
    interests.push_back({&path, name, path.round});
  }
}

// Those of the path's first watches that are not of this round.
void tWatchedPaths::dropInterests(tWatchedPath& path, std::size_t watches, unsigned round) {
  for (std::size_t n = 0; n < watches; ++n) {
    const auto place = interests_.find(path.watches[n]);
    if (place == interests_.end()) continue;
    std::erase_if(place->second,
                  [&](const tInterest& one) { return one.path == &path && one.round != round; });
    if (!place->second.empty()) continue;
    interests_.erase(place);
    events_->unwatch(path.watches[n]);
  }
  path.watches.erase(path.watches.begin(),
                     path.watches.begin() + static_cast<std::ptrdiff_t>(watches));
}

void tWatchedPaths::take(tChangeEvents& events) {
  if (&events != events_.get()) return;
  const bool isWhole = events.take(
      [this](int watch, const char* name, bool isEnd) { countChange(watch, name, isEnd); });
  if (!isWhole) countChangeEverywhere();
}

void tWatchedPaths::countChange(int watch, const char* name, bool isEnd) {
  const auto place = interests_.find(watch);
  if (place == interests_.end()) return;
  for (const tInterest& interest : place->second) {
    if (*name != '\0' && interest.name != name) continue;
    ++interest.path->changes;
    interest.path->isCurrent = false;
  }
  if (isEnd) interests_.erase(place);
}

void tWatchedPaths::countChangeEverywhere() {
  for (auto& [name, path] : paths_) {
    ++path->changes;
    path->isCurrent = false;
  }
}

void tWatchedPaths::abandon() {
  for (tChangeEvents* const events : {latest_.load(), coming_.load()}) {
    if (events) events->release();
  }
}

}  // namespace halden
