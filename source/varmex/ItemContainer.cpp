#include "source/varmex/ItemContainer.h"

#include <algorithm>

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

bool isLess(const boost::shared_ptr<const Item>& a, const boost::shared_ptr<const Item>& b) {
  return a->lessThan(*b);
}

class ItemCollector final : public ItemVisitor {
 public:
  explicit ItemCollector(std::uint32_t wantedKind) : wantedKind_(wantedKind) {}

  tResult<> visit(const Item& item) override {
    if (item.kind() == wantedKind_) {
      if (isKnown(item)) return kDone;
      auto copy = item.clone();
      if (!copy) return copy.refusal();
      // Owned ahead of the list's growth, which may find no memory.
      boost::shared_ptr<const Item> shared(copy->release());
      items_.push_back(std::move(shared));
    }
    return item.acceptVisitor(*this);
  }

  // Of equal items the one that came first. Only devices come twice, and nothing is below them.
  ItemContainer takeItems() {
    if (!isOrdered_) {
      std::stable_sort(items_.begin(), items_.end(), isLess);
      const auto isRepeated = [](const auto& a, const auto& b) { return !isLess(a, b); };
      items_.erase(std::unique(items_.begin(), items_.end(), isRepeated), items_.end());
    }
    return std::move(items_);
  }

 private:
  // Items come in their order, mostly, so that the last one tells.
  bool isKnown(const Item& item) {
    if (items_.empty() || items_.back()->lessThan(item)) return false;
    if (!item.lessThan(*items_.back())) return true;
    isOrdered_ = false;
    return false;
  }

  std::uint32_t wantedKind_;
  ItemContainer items_;
  bool isOrdered_ = true;
};

}  // namespace

tResult<ItemContainer> collectItems(const Item& item, std::uint32_t attribute) {
  const auto wantedKind = kindOf(attribute);
  if (!wantedKind) return wantedKind.refusal();
  if (!contains(item.kind(), *wantedKind)) {
    return tRefusal(kErrorAttributeNotApplicable, OSTREL_HERE);
  }
  ItemCollector collector(*wantedKind);
  const auto done = item.acceptVisitor(collector);
  if (!done) return done.refusal();
  return collector.takeItems();
}

}  // namespace varmex
