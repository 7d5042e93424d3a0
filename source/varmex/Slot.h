#ifndef SOURCE_VARMEX_SLOT_H
#define SOURCE_VARMEX_SLOT_H

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "ostrel/quarks/synchronization.h"
#include "ostrel/quarks/transientFailures.h"
#include "source/varmex/Item.h"
#include "source/varmex/description.h"
#include "source/varmex/slotTriggers.h"

namespace varmex {

// A slot of a chassis. Plain attributes are read from the description at each call; what takes a
// search is found once, under the slot's lock, and kept.
class Slot : public Item {
 public:
  Slot(std::uint32_t chassisNumber, std::uint32_t slotNumber, const tDescription& description);

  std::uint32_t getU32Attribute(std::uint32_t attribute) const override;
  const char* getStringAttribute(std::uint32_t attribute) const override;
  std::unique_ptr<Item> clone() const override;
  std::unique_ptr<Item> openContainingItem(std::uint32_t kind) const override;
  bool lessThan(const Item& other) const override;
  void acceptVisitor(ItemVisitor& visitor) const override;

  const tSlotPlace& place() const { return place_; }

 private:
  // A record that is made at first need and never replaced. The pointer is read without the lock.
  // One that was made without the registry because of a failure of the moment stays, as texts of it
  // may be in use, but the next need makes another.
  template <class Record>
  class tCache {
   public:
    template <class Find>
    const Record& get(tCriticalSection& lock, Find find) {
      if (const Record* record = ready_.load(std::memory_order_acquire)) return *record;
      const std::lock_guard<tCriticalSection> held(lock);
      if (!owned_) {
        const std::uint64_t failures = transientFailures;
        auto found = find();
        if (transientFailures != failures) return answerForNow(std::move(found));
        owned_ = std::move(found);
        ready_.store(owned_.get(), std::memory_order_release);
      }
      return *owned_;
    }

   private:
    const Record& answerForNow(std::unique_ptr<const Record> found) {
      for (const auto& known : forNow_) {
        if (*known == *found) return *known;
      }
      return *forNow_.emplace_back(std::move(found));
    }

    std::unique_ptr<const Record> owned_;
    std::vector<std::unique_ptr<const Record>> forNow_;  // each content once
    std::atomic<const Record*> ready_{nullptr};
  };

  explicit Slot(const tSlotPlace& place);

  const TriggerBusInfo& triggerBus() const;
  const StarTriggerInfo& starTrigger() const;
  const StarTriggerInfo& starLine() const;
  const StarTriggerInfo& starController() const;
  const DStarTriggerInfo& dstarTrigger() const;
  const DStarTriggerInfo& dstarSet() const;
  const DStarTriggerInfo& dstarController() const;

  std::uint32_t slotType() const;
  void requireType(std::uint32_t bits, const char* message) const;
  std::uint32_t linkNumber(const char* item) const;
  std::uint32_t systemLinkCount() const;
  const char* systemSlotText(const char* item) const;
  const char* localBusLeft() const;
  const char* localBusRight() const;
  const char* expressLocalBus(const char* item, std::uint32_t type, const char* message) const;
  [[noreturn]] void raiseForType(const tErrorCode& code, std::uint32_t type, const char* message,
                                 const tSourcePosition& position) const;
  std::uint32_t occupyingModuleSlot() const;
  std::uint32_t findOccupyingModule() const;

  tSlotPlace place_;
  mutable tCriticalSection lock_;
  mutable tCache<TriggerBusInfo> triggerBus_;
  mutable tCache<StarTriggerInfo> starTrigger_;
  mutable tCache<DStarTriggerInfo> dstarTrigger_;
  mutable std::atomic<std::uint32_t> occupyingModule_{0};  // 0: not searched yet
};

}  // namespace varmex

#endif
