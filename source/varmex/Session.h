#ifndef SOURCE_VARMEX_SESSION_H
#define SOURCE_VARMEX_SESSION_H

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <memory>
#include <optional>
#include <string>

#include "corpxiTools/fileSystem/utils.h"
#include "halden/tools/FileModificationTime.h"
#include "ostrel/quarks/synchronization.h"
#include "source/varmex/Item.h"
#include "source/varmex/SystemChangeObserver.h"
#include "source/varmex/sharedDescription.h"

namespace varmex {

// The root of the model: a snapshot of the two description files, read by the constructor.
class Session : public Item {
 public:
  Session();
  ~Session() override { delete observer_; }

  tResult<std::uint32_t> getU32Attribute(std::uint32_t attribute) const override;
  tResult<const char*> getStringAttribute(std::uint32_t attribute) const override;
  tResult<std::unique_ptr<Item>> clone() const override;
  tResult<std::unique_ptr<Item>> openContainingItem(std::uint32_t kind) const override;
  bool lessThan(const Item& other) const override;
  tResult<> acceptVisitor(ItemVisitor& visitor) const override;

  const tDescription& description() const { return description_->files; }

  // The device at an address. Bus and device number must be known; the function is taken as given.
  tResult<std::unique_ptr<Item>> openDevice(const tDeviceAddress& address) const;

  // Blocks until the description changed, for at most that many milliseconds (0xFFFFFFFF: no
  // limit), or until the cancel. Any number of threads may wait.
  varmex_WaitResult waitForInvalidation(std::uint32_t timeoutMs) const;

  // For good: every wait of the session, running or later, ends with varmex_waitCancelled.
  void cancelWait() const;

 private:
  void findPaths();

  // Both files; nothing when they are what is expected, if anything is.
  std::optional<tDescriptionTexts> readTexts(const tDescriptionKey* expected) const;
  std::optional<tDescriptionTexts> readUnderLock(tLooked looked,
                                                 const tDescriptionKey* expected) const;
  std::optional<tDescriptionTexts> readFiles(const tDescriptionKey* expected) const;

  bool isCurrent() const;
  SystemChangeObserver& observer() const;
  std::optional<std::uint64_t> changesWhileCurrent(SystemChangeObserver& changes) const;

  tDescriptionUse description_;
  std::string pxiSysPath_;
  std::string pxieSysPath_;
  std::string configurationPath_;
  boost::shared_ptr<const halden::tFileTimeStamp> pxiSysTime_;
  boost::shared_ptr<const halden::tFileTimeStamp> pxieSysTime_;
  mutable std::atomic<SystemChangeObserver*> observer_{nullptr};  // null until the first need
  mutable std::atomic<bool> cancelled_{false};                    // never cleared
};

}  // namespace varmex

#endif
