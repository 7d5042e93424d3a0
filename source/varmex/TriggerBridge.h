#ifndef SOURCE_VARMEX_TRIGGERBRIDGE_H
#define SOURCE_VARMEX_TRIGGERBRIDGE_H

#include "source/varmex/Item.h"
#include "source/varmex/description.h"

namespace varmex {

// What a std::out_of_range tells that leaves for a destination line 8.
inline constexpr const char* kLineOutOfRange = "invalid bitset<N> position";

// A bridge that hands signals from one trigger bus of a chassis to another.
class TriggerBridge : public Item {
 public:
  struct tPlace {
    std::uint32_t chassis;
    std::uint32_t number;
    std::uint32_t mapping;  // number of the section with the lines
    const tDescription* description;
  };

  // Where the bridge stands; varmex_errorUnknownItem when neither file has it.
  static tResult<tPlace> find(std::uint32_t chassisNumber, std::uint32_t bridgeNumber,
                              const tDescription& description);

  explicit TriggerBridge(const tPlace& place) : place_(place) {}

  tResult<std::uint32_t> getU32Attribute(std::uint32_t attribute) const override;
  tResult<const char*> getStringAttribute(std::uint32_t attribute) const override;
  tResult<std::unique_ptr<Item>> clone() const override;
  tResult<std::unique_ptr<Item>> openContainingItem(std::uint32_t kind) const override;
  bool lessThan(const Item& other) const override;
  tResult<> acceptVisitor(ItemVisitor& visitor) const override;

 private:
  tResult<std::uint32_t> busNumber(tLiteral item) const;
  tResult<std::uint32_t> lineMapping(tLiteral item) const;

  tPlace place_;
};

}  // namespace varmex

#endif
