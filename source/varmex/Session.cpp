#include "source/varmex/Session.h"

#include <boost/make_shared.hpp>
#include <optional>
#include <utility>

#include "corpxiTools/fileSystem/inputFile.h"
#include "halden/internal/FileLockImpl.h"
#include "ostrel/quarks/throwingStatus.h"
#include "source/varmex/errorCodes.h"
#include "source/varmex/fileStamp.h"
#include "source/varmex/timedRetry.h"

namespace varmex {

namespace {

constexpr const char* kVersion = VARMEX_VERSION;

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

tFileLook existsOrThrow(const std::string& path) {
  tThrowingStatus<std::int32_t> status;
  return fileExists(path, status);
}

boost::shared_ptr<const halden::tFileTimeStamp> takeStamp(const std::string& path) {
  return boost::make_shared<const halden::tFileTimeStamp>(stampWithRetry(path));
}

[[noreturn]] void raiseInaccessible(const std::string& path, const tSourcePosition& position) {
  tFailure(kDescriptionTimeout, position).debug().text("path", path).raise();
}

void readFile(tIniText& text, const std::string& path, const tContentDigest* expected) {
  auto [isThere, looked] = existsOrThrow(path);
  if (!isThere) return;
  // The first attempt alone goes by the look that was had just now.
  const bool isRead = retryFor10s([&, &seen = looked] {
    return readIniText(path, text, std::exchange(seen, tLooked::no), expected);
  });
  if (!isRead) raiseInaccessible(path, OSTREL_HERE);
}

}  // namespace

Session::Session() {
  findPaths();
  pxiSysTime_ = takeStamp(pxiSysPath_);
  pxieSysTime_ = takeStamp(pxieSysPath_);
  tDescriptionUse likely = tDescriptionUse::ofLatest();
  auto texts = readTexts(likely ? &likely->key : nullptr);
  description_ = texts ? tDescriptionUse::of(*std::move(texts)) : std::move(likely);
}

void Session::findPaths() {
  pxiSysPath_ = getPxiSysPath();
  pxieSysPath_ = getPxieSysPath();
  tThrowingStatus<tStatusRecord> status;
  configurationPath_ = getConfigurationPath(status);
}

std::optional<tDescriptionTexts> Session::readTexts(const tDescriptionKey* expected) const {
  const tFileLook lock = existsOrThrow(configurationPath_);
  return lock ? readUnderLock(lock.looked, expected) : readFiles(expected);
}

std::optional<tDescriptionTexts> Session::readUnderLock(tLooked looked,
                                                        const tDescriptionKey* expected) const {
  std::optional<tInputFile> file;
  const bool isOpen = retryFor10s([&] {
    file.emplace(configurationPath_.c_str(), std::exchange(looked, tLooked::no));
    return file->isOpen();
  });
  if (!isOpen) raiseInaccessible(configurationPath_, OSTREL_HERE);
  halden::FileLockImpl lock(file->descriptor());
  if (!retryFor10s([&] { return lock.tryLockShared(); })) {
    tFailure(kLockTimeout, OSTREL_HERE).raise();
  }
  const tHeldLock held(lock);
  return readFiles(expected);
}

std::optional<tDescriptionTexts> Session::readFiles(const tDescriptionKey* expected) const {
  tDescriptionTexts texts;
  readFile(texts.pxiSys, pxiSysPath_, expected ? &expected->pxiSys : nullptr);
  readFile(texts.pxieSys, pxieSysPath_, expected ? &expected->pxieSys : nullptr);
  if (!expected) return texts;
  const bool isSame[] = {texts.pxiSys.is(expected->pxiSys), texts.pxieSys.is(expected->pxieSys)};
  if (isSame[0] && isSame[1]) return std::nullopt;
  // Of one file alone, what was as expected is needed after all.
  if (isSame[0]) readFile(texts.pxiSys, pxiSysPath_, nullptr);
  if (isSame[1]) readFile(texts.pxieSys, pxieSysPath_, nullptr);
  return texts;
}

tResult<std::uint32_t> Session::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_Session;
    case varmex_u32_SessionIsCurrent: return isCurrent() ? 1U : 0U;
    default: return attributeNotApplicable(attribute, OSTREL_HERE);
  }
}

tResult<const char*> Session::getStringAttribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_str_PxiSysPath: return pxiSysPath_.c_str();
    case varmex_str_PxieSysPath: return pxieSysPath_.c_str();
    case varmex_str_ConfigurationPath: return configurationPath_.c_str();
    case varmex_str_Version: return kVersion;
    default: break;
  }
  // The key differs from that of the numeric attributes; clients look for both.
  return tRefusal(kErrorAttributeNotApplicable, OSTREL_HERE)
      .debug()
      .i32("attr", static_cast<std::int32_t>(attribute));
}

tResult<std::unique_ptr<Item>> Session::clone() const {
  return tRefusal(kErrorFeatureUnsupported, OSTREL_HERE)
      .debug()
      .text("message", "VARMEX doesn't support cloning sessions.");
}

tResult<std::unique_ptr<Item>> Session::openContainingItem(std::uint32_t) const {
  return tRefusal(kErrorFeatureUnsupported, OSTREL_HERE)
      .debug()
      .text("message", "Sessions don't have containing items.");
}

bool Session::lessThan(const Item& other) const { return kind() < other.kind(); }

tResult<std::unique_ptr<Item>> Session::openDevice(const tDeviceAddress& address) const {
  const auto place = description_->devices.find(address);
  if (!place) return place.refusal();
  return std::make_unique<Device>(Device::tRecord{*place, address, &description()});
}

}  // namespace varmex
