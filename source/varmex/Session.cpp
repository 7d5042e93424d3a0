#include "source/varmex/Session.h"

#include <boost/make_shared.hpp>
#include <cstdio>

#include "corpxiTools/fileSystem/inputFile.h"
#include "corpxiTools/fileSystem/utils.h"
#include "halden/internal/FileLockImpl.h"
#include "ostrel/quarks/throwingStatus.h"
#include "source/varmex/FileObserver.h"
#include "source/varmex/errorCodes.h"
#include "source/varmex/timedRetry.h"

namespace varmex {

namespace {

constexpr const char* kVersion = "19.5.0";

struct tFileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using tFile = std::unique_ptr<std::FILE, tFileCloser>;

// Gives a lock back on every way out.
class tHeldLock {
 public:
  explicit tHeldLock(halden::FileLockImpl& lock) : lock_(lock) {}
  tHeldLock(const tHeldLock&) = delete;
  tHeldLock& operator=(const tHeldLock&) = delete;
  ~tHeldLock() { lock_.unlock(); }

 private:
  halden::FileLockImpl& lock_;
};

bool existsOrThrow(const std::string& path) {
  tThrowingStatus<std::int32_t> status;
  return fileExists(path, status);
}

halden::tFileTimeStamp readStamp(const std::string& path) {
  tThrowingStatus<tStatusRecord> status;
  std::uint64_t time = 0;
  if (!halden::readLastWriteTime(path, time, status)) return {};
  return {true, static_cast<std::uint32_t>(time), static_cast<std::uint32_t>(time >> 32)};
}

// Lacking rights may be a matter of the moment while a file is being replaced: they are asked for
// again, for a second.
halden::tFileTimeStamp stampWithRetry(const std::string& path) {
  constexpr std::chrono::milliseconds kLimit{1'000};
  const tStopwatch stopwatch;
  while (true) {
    std::chrono::milliseconds remaining{0};
    try {
      return readStamp(path);
    } catch (const corerr::ExceptionBase& exception) {
      remaining = stopwatch.remaining(kLimit);
      if (exception.record().code != kOstrelInsufficientPermissions.value) throw;
      if (remaining.count() == 0) throw;
    }
    std::this_thread::sleep_for(std::min(remaining, kRetryPause));
  }
}

boost::shared_ptr<const halden::tFileTimeStamp> takeStamp(const std::string& path) {
  return boost::make_shared<const halden::tFileTimeStamp>(stampWithRetry(path));
}

[[noreturn]] void raiseInaccessible(const std::string& path, const tSourcePosition& position) {
  tFailure(kDescriptionTimeout, position).debug().text("path", path).raise();
}

void readFile(tIniText& text, const std::string& path, std::string_view expected) {
  if (!existsOrThrow(path)) return;
  if (!retryFor10s([&] { return readIniText(path, text, expected); })) {
    raiseInaccessible(path, OSTREL_HERE);
  }
}

}  // namespace

Session::Session() : observerLock_(tThrowingStatus<tFixedStatus>()) {
  findPaths();
  pxiSysTime_ = takeStamp(pxiSysPath_);
  pxieSysTime_ = takeStamp(pxieSysPath_);
  const tDescriptionUse likely = tDescriptionUse::ofLatest();
  description_ = tDescriptionUse::of(readTexts(likely ? &likely->texts : nullptr));
}

void Session::findPaths() {
  pxiSysPath_ = getPxiSysPath();
  pxieSysPath_ = getPxieSysPath();
  tThrowingStatus<tStatusRecord> status;
  configurationPath_ = getConfigurationPath(status);
}

tDescriptionTexts Session::readTexts(const tDescriptionTexts* expected) const {
  return existsOrThrow(configurationPath_) ? readUnderLock(expected) : readFiles(expected);
}

tDescriptionTexts Session::readUnderLock(const tDescriptionTexts* expected) const {
  tFile file;
  const bool isOpen = retryFor10s([&] {
    file.reset(openInputStream(configurationPath_.c_str()));
    return file != nullptr;
  });
  if (!isOpen) raiseInaccessible(configurationPath_, OSTREL_HERE);
  halden::FileLockImpl lock(file.get());
  if (!retryFor10s([&] { return lock.tryLockShared(); })) {
    tFailure(kLockTimeout, OSTREL_HERE).raise();
  }
  const tHeldLock held(lock);
  return readFiles(expected);
}

tDescriptionTexts Session::readFiles(const tDescriptionTexts* expected) const {
  tDescriptionTexts texts;
  readFile(texts.pxiSys, pxiSysPath_, expected ? expected->pxiSys.bytes() : "");
  readFile(texts.pxieSys, pxieSysPath_, expected ? expected->pxieSys.bytes() : "");
  return texts;
}

std::uint32_t Session::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_Session;
    case varmex_u32_SessionIsCurrent: return isCurrent() ? 1 : 0;
    default: raiseAttributeNotApplicable(attribute, OSTREL_HERE);
  }
}

const char* Session::getStringAttribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_str_PxiSysPath: return pxiSysPath_.c_str();
    case varmex_str_PxieSysPath: return pxieSysPath_.c_str();
    case varmex_str_ConfigurationPath: return configurationPath_.c_str();
    case varmex_str_Version: return kVersion;
    default: break;
  }
  // The key differs from that of the numeric attributes; clients look for both.
  tFailure(kErrorAttributeNotApplicable, OSTREL_HERE)
      .debug()
      .i32("attr", static_cast<std::int32_t>(attribute))
      .raise();
}

bool Session::isCurrent() const {
  return stampWithRetry(pxiSysPath_) == *pxiSysTime_ &&
         stampWithRetry(pxieSysPath_) == *pxieSysTime_;
}

SystemChangeObserver& Session::observer() const {
  if (SystemChangeObserver* ready = observer_.load(std::memory_order_acquire)) return *ready;
  const std::lock_guard<tCriticalSection> held(observerLock_);
  if (!ownedObserver_) {
    ownedObserver_ = std::make_unique<FileObserver>();
    observer_.store(ownedObserver_.get(), std::memory_order_release);
  }
  return *ownedObserver_;
}

varmex_WaitResult Session::waitForInvalidation(std::uint32_t timeoutMs) const {
  constexpr std::int64_t kLongest = halden::kForever - 1;  // of the waits that end
  SystemChangeObserver& changes = observer();
  const tStopwatch stopwatch;
  while (!cancelled_) {
    // The files are looked at ahead of each sleep: the watch starts late, and a notification says
    // nothing about what changed.
    const std::uint64_t seen = changes.changes();
    if (!isCurrent()) return varmex_waitChanged;
    if (timeoutMs == halden::kForever) {
      changes.waitBeyond(seen, timeoutMs);
      continue;
    }
    const auto elapsed = stopwatch.elapsed().count();
    if (elapsed > timeoutMs) return varmex_waitTimedOut;
    // One more, so that the time is over at the next look.
    const auto remaining =
        static_cast<std::uint32_t>(std::min<std::int64_t>(timeoutMs - elapsed + 1, kLongest));
    if (!changes.waitBeyond(seen, remaining)) return varmex_waitTimedOut;
  }
  return varmex_waitCancelled;
}

void Session::cancelWait() const {
  SystemChangeObserver& waiters = observer();
  cancelled_ = true;
  waiters.cancel();
}

std::unique_ptr<Item> Session::clone() const {
  tFailure(kErrorFeatureUnsupported, OSTREL_HERE)
      .debug()
      .text("message", "VARMEX doesn't support cloning sessions.")
      .raise();
}

std::unique_ptr<Item> Session::openContainingItem(std::uint32_t) const {
  tFailure(kErrorFeatureUnsupported, OSTREL_HERE)
      .debug()
      .text("message", "Sessions don't have containing items.")
      .raise();
}

bool Session::lessThan(const Item& other) const { return kind() < other.kind(); }

std::unique_ptr<Item> Session::openDevice(const tDeviceAddress& address) const {
  return std::make_unique<Device>(description_->devices.find(address), address, description());
}

}  // namespace varmex
