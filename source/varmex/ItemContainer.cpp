#include "source/varmex/ItemContainer.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <utility>
#include <vector>

#include "source/varmex/Chassis.h"
#include "source/varmex/Device.h"
#include "source/varmex/Slot.h"
#include "source/varmex/TriggerBridge.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

namespace {

struct tContainment {
  std::uint32_t container;
  std::uint32_t contained;
};

constexpr tContainment kContainments[] = {
    {varmex_itemType_Session, varmex_itemType_Chassis},
    {varmex_itemType_Chassis, varmex_itemType_Slot},
    {varmex_itemType_Chassis, varmex_itemType_TriggerBridge},
    {varmex_itemType_Slot, varmex_itemType_Device},
};

struct tContainerAttribute {
  std::uint32_t attribute;
  std::uint32_t kind;
};

constexpr tContainerAttribute kContainerAttributes[] = {
    {varmex_container_Chassis, varmex_itemType_Chassis},
    {varmex_container_Slots, varmex_itemType_Slot},
    {varmex_container_TriggerBridges, varmex_itemType_TriggerBridge},
    {varmex_container_Devices, varmex_itemType_Device},
};

bool contains(std::uint32_t container, std::uint32_t kind) {
  for (const tContainment& pair : kContainments) {
    if (pair.container != container) continue;
    if (pair.contained == kind || contains(pair.contained, kind)) return true;
  }
  return false;
}

tResult<std::uint32_t> kindOf(std::uint32_t attribute) {
  for (const tContainerAttribute& row : kContainerAttributes) {
    if (row.attribute == attribute) return row.kind;
  }
  return tRefusal(kErrorAttributeNotApplicable, OSTREL_HERE).debug().u32("attr", attribute);
}

template <class Class>
class tRecords final : public ItemList {
 public:
  using tRecord = typename Class::tRecord;

  explicit tRecords(std::vector<tRecord> records) : records_(std::move(records)) {}

  std::size_t size() const override { return records_.size(); }

  std::unique_ptr<Item> copy(std::size_t position) const override {
    return std::make_unique<Class>(records_[position]);
  }

 private:
  std::vector<tRecord> records_;
};

template <class Class>
class ItemCollector final : public ItemVisitor {
 public:
  bool keeps(std::uint32_t kind) const override { return kind == Class::kKind; }

  tResult<> visit(const Item& item) override {
    if (keeps(item.kind())) keep(static_cast<const Class&>(item).record());
    return item.acceptVisitor(*this);
  }

  ItemContainer takeItems() {
    if (!isOrdered_) {
      std::stable_sort(records_.begin(), records_.end(), Class::isLess);
      const auto isRepeated = [](const auto& a, const auto& b) { return !Class::isLess(a, b); };
      records_.erase(std::unique(records_.begin(), records_.end(), isRepeated), records_.end());
    }
    return boost::make_shared<const tRecords<Class>>(std::move(records_));
  }

 private:
  using tRecord = typename Class::tRecord;
  static constexpr std::ptrdiff_t kMostSteps = 64;

  // Of equal items the one that came first. Items come in their order, mostly, or a few places
  // behind the one that is theirs; what comes farther behind is put in its place in the end.
  void keep(const tRecord& record) {
    auto place = records_.end();
    if (isOrdered_) {
      const auto stop = place - std::min(kMostSteps, place - records_.begin());
      while (place != stop && Class::isLess(record, place[-1])) --place;
      if (place != records_.begin() && !Class::isLess(place[-1], record)) {
        if (!Class::isLess(record, place[-1])) return;
        isOrdered_ = false;
        place = records_.end();
      }
    }
    records_.insert(place, record);
  }

  std::vector<tRecord> records_;
  bool isOrdered_ = true;
};

template <class Class>
tResult<ItemContainer> collect(const Item& item) {
  ItemCollector<Class> collector;
  const auto done = item.acceptVisitor(collector);
  if (!done) return done.refusal();
  return collector.takeItems();
}

}  // namespace

tResult<ItemContainer> collectItems(const Item& item, std::uint32_t attribute) {
  const auto wantedKind = kindOf(attribute);
  if (!wantedKind) return wantedKind.refusal();
  if (!contains(item.kind(), *wantedKind)) {
    return tRefusal(kErrorAttributeNotApplicable, OSTREL_HERE);
  }
  switch (*wantedKind) {
    case Chassis::kKind: return collect<Chassis>(item);
    case Slot::kKind: return collect<Slot>(item);
    case TriggerBridge::kKind: return collect<TriggerBridge>(item);
    default: return collect<Device>(item);
  }
}

}  // namespace varmex
