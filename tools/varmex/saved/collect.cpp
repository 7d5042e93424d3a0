#include "tools/varmex/saved/collect.h"

#include <boost/algorithm/string/predicate.hpp>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>
#include <set>
#include <stdexcept>
#include <thread>

#include "corpxiTools/fileSystem/fileBytes.h"
#include "corpxiTools/fileSystem/utils.h"
#include "halden/internal/nativeFileLock.h"
#include "tools/varmex/machine/thisMachine.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/moment.h"
#include "tools/varmex/text/shownPaths.h"
#include "varmex/varmex.hpp"

namespace tool {

namespace {

constexpr std::size_t kMostChassisFileBytes = std::size_t{1} << 20;

// As long as it lives, nobody writes the description who takes the lock for it. Without the file
// there is no lock.
class tSharedLock {
 public:
  explicit tSharedLock(const std::string& path) : file_(path.c_str()) {
    if (!file_.isOpen()) return;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    if (!lock_.attach(file_.descriptor())) refuse(path, "can't be locked");
    halden::tLockAnswer answer = lock_.tryLockShared();
    while (answer == halden::tLockAnswer::heldElsewhere) {
      if (std::chrono::steady_clock::now() > end) {
        refuse(path,
               "was kept locked by another program for 10 seconds; try again when it is done");
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      answer = lock_.tryLockShared();
    }
    if (answer == halden::tLockAnswer::failed) refuse(path, "can't be locked");
  }
  tSharedLock(const tSharedLock&) = delete;
  tSharedLock& operator=(const tSharedLock&) = delete;
  ~tSharedLock() {
    if (file_.isOpen()) lock_.unlock();
  }

 private:
  [[noreturn]] static void refuse(const std::string& path, const char* reason) {
    throw std::runtime_error(path + ' ' + reason);
  }

  varmex::tInputFile file_;
  halden::tNativeFileLock lock_;
};

// Nothing, with `errno` set, for a file that can't be read.
std::optional<std::string> bytesOfFile(const std::string& path, std::size_t most) {
  varmex::tInputFile file(path.c_str());
  varmex::tFileBytes content;
  if (!file.isOpen()) return std::nullopt;
  if (file.size() > most) return errno = EFBIG, std::nullopt;
  if (!varmex::readWholeFile(file, 0, content)) return std::nullopt;
  return std::string(content.bytes.get(), content.size);
}

std::vector<tFileContent> takeFiles() {
  const std::string paths[] = {varmex::getPxiSysPath(), varmex::getPxieSysPath(),
                               configurationPath()};
  std::vector<tFileContent> files;
  std::size_t total = 0;
  for (std::size_t n = 0; n < std::size(paths); ++n) {
    auto bytes = bytesOfFile(paths[n], kMostSavedBytes / 4 - total);
    if (!bytes && errno != ENOENT) {
      throw std::runtime_error("can't read " + paths[n] + ": " + std::strerror(errno));
    }
    if (!bytes) continue;
    total += bytes->size();
    files.push_back({kSavedPaths[n], *std::move(bytes)});
  }
  const bool isDescribed = !files.empty() && files.front().path != std::end(kSavedPaths)[-1];
  if (!isDescribed) throw tNoDescription();
  return files;
}

// What a description names is taken if it looks like a chassis description file. Best effort: the
// library does not read them.
void takeChassisFile(const std::string& path, std::set<std::string>& known,
                     std::vector<tFileContent>& files) {
  if (files.size() >= kMostChassisFiles || !boost::iends_with(path, ".ini")) return;
  if (!known.insert(path).second) return;
  auto bytes = bytesOfFile(pathBelowRoot(path), kMostChassisFileBytes);
  if (bytes) files.push_back({path, *std::move(bytes)});
}

std::vector<tFileContent> takeChassisFiles() {
  std::vector<tFileContent> files;
  std::set<std::string> known;
  try {
    const varmex::Session session;
    for (const auto& chassis : session.eachChassis()) {
      if (!chassis.item) continue;
      try {
        takeChassisFile(chassis.item->descriptionFileIfAny().value_or(""), known, files);
      } catch (const std::exception&) {
        // `varmex check` tells what is wrong with it.
      }
    }
  } catch (const std::exception&) {
    // The same for a description that can't be opened, which is worth being saved, too.
  }
  return files;
}

}  // namespace

tSavedInstallation takeInstallation() {
  tSavedInstallation saved;
  const tSharedLock lock(configurationPath());
  saved.taken = momentInUtc();
  saved.host = hostName();
  saved.platform = platformName();
  saved.files = takeFiles();
  saved.registry = takeRegistryValues();
  saved.chassisFiles = takeChassisFiles();
  saved.pci = tPciTree::read(pathBelowRoot(kPciFolder));
  return saved;
}

}  // namespace tool
