#ifndef SOURCE_VARMEX_DEVICE_H
#define SOURCE_VARMEX_DEVICE_H

#include "source/varmex/Item.h"
#include "source/varmex/description.h"

namespace varmex {

// Where a device was found.
struct tDevicePlace {
  std::uint32_t chassis;
  std::uint32_t slot;
  std::uint32_t isExpress;  // 1 from the express file, 0 from the classic one

  bool operator==(const tDevicePlace&) const = default;
};

// One PCI function of a module. What it says of the module stands in the express file's section of
// the slot, so all functions of a module answer the same.
class Device : public Item {
 public:
  static constexpr std::uint32_t kKind = varmex_itemType_Device;

  struct tRecord {
    tDevicePlace place;
    tDeviceAddress address;
    const tDescription* description;
  };

  explicit Device(const tRecord& record);

  const tRecord& record() const { return record_; }

  // By address alone.
  static bool isLess(const tRecord& a, const tRecord& b);

  tResult<std::uint32_t> getU32Attribute(std::uint32_t attribute) const override;
  tResult<const char*> getStringAttribute(std::uint32_t attribute) const override;
  tResult<std::unique_ptr<Item>> clone() const override;
  tResult<std::unique_ptr<Item>> openContainingItem(std::uint32_t kind) const override;
  bool lessThan(const Item& other) const override;
  tResult<> acceptVisitor(ItemVisitor& visitor) const override;

 private:
  tResult<std::uint32_t> moduleNumber(tLiteral item) const;
  tResult<const char*> moduleText(tLiteral item) const;
  tResult<tIniPlace> module() const;

  tRecord record_;
  tShortName name_;
};

}  // namespace varmex

#endif
