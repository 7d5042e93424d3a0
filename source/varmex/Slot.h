#ifndef SOURCE_VARMEX_SLOT_H
#define SOURCE_VARMEX_SLOT_H

#include <atomic>
#include <memory>
#include <string>

#include "ostrel/quarks/onceMade.h"
#include "ostrel/quarks/transientFailures.h"
#include "source/varmex/Item.h"
#include "source/varmex/description.h"
#include "source/varmex/slotTriggers.h"

namespace varmex {

// A slot of a chassis. Plain attributes are read from the description at each call; what takes a
// search is found once and kept.
class Slot : public Item {
 public:
  static constexpr std::uint32_t kKind = varmex_itemType_Slot;

  using tPlace = tSlotPlace;
  using tRecord = tPlace;

  // Where the slot stands; varmex_errorUnknownItem when neither file has it. It is found sooner if
  // it stands just behind the sections of another one, `earlier`.
  static tResult<tSlotPlace> find(std::uint32_t chassisNumber, std::uint32_t slotNumber,
                                  const tDescription& description,
                                  const tSectionPair& earlier = {});

  explicit Slot(const tSlotPlace& place);

  const tRecord& record() const { return place_; }
  static bool isLess(const tRecord& a, const tRecord& b);

  tResult<std::uint32_t> getU32Attribute(std::uint32_t attribute) const override;
  tResult<const char*> getStringAttribute(std::uint32_t attribute) const override;
  tResult<std::unique_ptr<Item>> clone() const override;
  tResult<std::unique_ptr<Item>> openContainingItem(std::uint32_t kind) const override;
  bool lessThan(const Item& other) const override;
  tResult<> acceptVisitor(ItemVisitor& visitor) const override;

 private:
  // A record that is made at first need and never replaced, without a lock: threads that need it at
  // once may each make it. One that was made without the registry because of a failure of the
  // moment stays, as texts of it may be in use, but the next need makes another.
  template <class Record>
  class tCache {
   public:
    // `make` answers a tResult; what it refuses is not kept.
    template <class Make>
    tResult<const Record*> get(Make make) const {
      if (const Record* const record = kept_.find()) return record;
      const std::uint64_t failures = transientFailures;
      tResult<Record> made = make();
      if (!made) return made.refusal();
      if (transientFailures != failures) return &forNow_.add(std::move(*made));
      return &kept_.get([&made] { return std::move(*made); });
    }

   private:
    tOnceMade<Record> kept_;
    tGrowingList<Record> forNow_;
  };

  tResult<const TriggerBusInfo*> triggerBus() const;
  tResult<const tStarMatch*> starLine() const;
  tResult<const tStarMatch*> starController() const;
  tResult<const tStarMatch*> dstarSet() const;
  tResult<const tStarMatch*> dstarController() const;
  tResult<const StarTriggerInfo*> starNames(const tResult<const tStarMatch*>& star) const;
  tResult<const DStarTriggerInfo*> dstarNames(const tResult<const tStarMatch*>& dstar) const;

  tIniPlace classicPlace() const { return placeOf(place_.sections.classic); }
  tIniPlace expressPlace() const { return placeOf(place_.sections.express); }
  tIniPlace placeOf(const tIniSection* section) const;

  tResult<std::uint32_t> slotType() const;
  tResult<> requireType(std::uint32_t bits, tLiteral message) const;
  tResult<std::uint32_t> linkNumber(tLiteral item) const;
  tResult<std::uint32_t> systemLinkCount() const;
  tResult<std::uint32_t> rootBus() const;
  tResult<const char*> slotPath() const;
  tResult<const char*> systemSlotText(tLiteral item) const;
  tResult<const char*> localBusLeft() const;
  tResult<const char*> localBusRight() const;
  tResult<const char*> expressLocalBus(tLiteral item, std::uint32_t type, tLiteral message) const;
  tRefusal refusedForType(const tErrorCode& code, std::uint32_t type, tLiteral message,
                          const tSourcePosition& position) const;
  tResult<std::uint32_t> occupyingModuleSlot() const;
  tResult<std::uint32_t> findOccupyingModule() const;

  tSlotPlace place_;
  tCache<TriggerBusInfo> triggerBus_;
  tCache<StarTriggerInfo> starNames_;
  tCache<DStarTriggerInfo> dstarNames_;
  mutable std::atomic<std::uint32_t> occupyingModule_{0};  // 0: not searched yet
};

}  // namespace varmex

#endif
