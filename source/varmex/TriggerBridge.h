#ifndef SOURCE_VARMEX_TRIGGERBRIDGE_H
#define SOURCE_VARMEX_TRIGGERBRIDGE_H

#include <string>

#include "source/varmex/Item.h"
#include "source/varmex/description.h"

namespace varmex {

// A bridge that hands signals from one trigger bus of a chassis to another.
class TriggerBridge : public Item {
 public:
  TriggerBridge(std::uint32_t chassisNumber, std::uint32_t bridgeNumber,
                const tDescription& description);

  std::uint32_t getU32Attribute(std::uint32_t attribute) const override;
  const char* getStringAttribute(std::uint32_t attribute) const override;
  std::unique_ptr<Item> clone() const override;
  std::unique_ptr<Item> openContainingItem(std::uint32_t kind) const override;
  bool lessThan(const Item& other) const override;
  void acceptVisitor(ItemVisitor& visitor) const override;

 private:
  struct tFields {
    std::uint32_t chassis;
    std::uint32_t number;
    const tDescription* description;
    std::string section;
    std::string mappingSection;
  };

  explicit TriggerBridge(const tFields& fields) : fields_(fields) {}

  std::uint32_t busNumber(const char* item) const;
  std::uint32_t lineMapping(const char* item) const;

  tFields fields_;
};

}  // namespace varmex

#endif
