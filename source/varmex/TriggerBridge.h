#ifndef SOURCE_VARMEX_TRIGGERBRIDGE_H
#define SOURCE_VARMEX_TRIGGERBRIDGE_H

#include "source/varmex/Item.h"
#include "source/varmex/bridgeReadings.h"

namespace varmex {

// A bridge that hands signals from one trigger bus of a chassis to another.
class TriggerBridge : public Item {
 public:
  static constexpr std::uint32_t kKind = varmex_itemType_TriggerBridge;

  struct tPlace : tBridgePlace {
    const tDescription* description;
  };

  using tRecord = tPlace;

  // Where the bridge stands; varmex_errorUnknownItem when neither file has it.
  static tResult<tPlace> find(std::uint32_t chassisNumber, std::uint32_t bridgeNumber,
                              const tDescription& description);

  explicit TriggerBridge(const tPlace& place) : place_(place) {}

  const tRecord& record() const { return place_; }
  static bool isLess(const tRecord& a, const tRecord& b);

  tResult<std::uint32_t> getU32Attribute(std::uint32_t attribute) const override;
  tResult<const char*> getStringAttribute(std::uint32_t attribute) const override;
  tResult<std::unique_ptr<Item>> clone() const override;
  tResult<std::unique_ptr<Item>> openContainingItem(std::uint32_t kind) const override;
  bool lessThan(const Item& other) const override;
  tResult<> acceptVisitor(ItemVisitor& visitor) const override;

 private:
  tPlace place_;
};

}  // namespace varmex

#endif
