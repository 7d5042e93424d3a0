#include "source/varmex/ItemContainer.h"

#include <set>

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

std::uint32_t kindOf(std::uint32_t attribute) {
  for (const tContainerAttribute& row : kContainerAttributes) {
    if (row.attribute == attribute) return row.kind;
  }
  tFailure(kErrorAttributeNotApplicable, OSTREL_HERE).debug().u32("attr", attribute).raise();
}

class ItemCollector final : public ItemVisitor {
 public:
  explicit ItemCollector(std::uint32_t wantedKind) : wantedKind_(wantedKind) {}

  void visit(const Item& item) override {
    if (item.kind() == wantedKind_) {
      const boost::shared_ptr<const Item> copy(item.clone().release());
      // Items come in their order, mostly, so the end is the place to try.
      const auto place = items_.insert(items_.end(), copy);
      if (*place != copy) return;  // known already, with all that is below it
    }
    item.acceptVisitor(*this);
  }

  ItemContainer items() const { return {items_.begin(), items_.end()}; }

 private:
  struct tLess {
    bool operator()(const boost::shared_ptr<const Item>& a,
                    const boost::shared_ptr<const Item>& b) const {
      return a->lessThan(*b);
    }
  };

  std::uint32_t wantedKind_;
  std::set<boost::shared_ptr<const Item>, tLess> items_;
};

}  // namespace

ItemContainer collectItems(const Item& item, std::uint32_t attribute) {
  const std::uint32_t wantedKind = kindOf(attribute);
  if (!contains(item.kind(), wantedKind)) {
    tFailure(kErrorAttributeNotApplicable, OSTREL_HERE).raise();
  }
  ItemCollector collector(wantedKind);
  item.acceptVisitor(collector);
  return collector.items();
}

}  // namespace varmex
