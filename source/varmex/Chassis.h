#ifndef SOURCE_VARMEX_CHASSIS_H
#define SOURCE_VARMEX_CHASSIS_H

#include <string>

#include "ostrel/quarks/onceMade.h"
#include "source/varmex/Item.h"
#include "source/varmex/description.h"

namespace varmex {

// A chassis. It may stand in either description file or in both; what stands in both must agree.
// All is fixed once it is made but for the library of its trigger manager, which is found at first
// need and kept.
class Chassis : public Item {
 public:
  static constexpr std::uint32_t kKind = varmex_itemType_Chassis;

  struct tPlace {
    std::uint32_t number;
    tSectionPair sections;  // one at least
    const tDescription* description;
    const char* identity;  // lives as long as the description
  };

  struct tRecord {
    tPlace place;
    std::string descriptionFile;  // empty when it could not be worked out
  };

  // Where the chassis stands; varmex_errorUnknownItem when neither file has it. One whose identity
  // can't be formed is refused.
  static tResult<tPlace> find(std::uint32_t number, const tDescription& description);

  // Works its description file out.
  explicit Chassis(const tPlace& place);

  explicit Chassis(tRecord record);

  const tRecord& record() const { return record_; }
  static bool isLess(const tRecord& a, const tRecord& b);

  tResult<std::uint32_t> getU32Attribute(std::uint32_t attribute) const override;
  tResult<const char*> getStringAttribute(std::uint32_t attribute) const override;
  tResult<std::unique_ptr<Item>> clone() const override;
  tResult<std::unique_ptr<Item>> openContainingItem(std::uint32_t kind) const override;
  bool lessThan(const Item& other) const override;
  tResult<> acceptVisitor(ItemVisitor& visitor) const override;

  std::uint32_t number() const { return record_.place.number; }
  const tDescription& description() const { return *record_.place.description; }

  // The numbers that an item of the chassis's section lists in either file, ascending, each once.
  tResult<tNumbers> mergedNumbers(tLiteral item) const;

 private:
  tResult<const char*> mergedItem(tLiteral item) const;
  tResult<const char*> serialNumber(std::uint32_t attribute) const;
  tResult<std::uint32_t> isTriggerManagerNative() const;
  tResult<const char*> triggerManagerLibrary() const;

  const tSectionPair& sections() const { return record_.place.sections; }

  tRecord record_;
  tOnceMade<std::string> triggerManagerLibrary_;
};

// The identity of a chassis that one of the files has; it lives as long as the description.
const tResult<std::string>& identityOf(std::uint32_t number, const tDescription& description);

// What contains an item of the chassis: the chassis for its own kind; any other request is passed
// on to it, which refuses.
tResult<std::unique_ptr<Item>> openChassisOrAbove(std::uint32_t kind, std::uint32_t chassisNumber,
                                                  const tDescription& description);

}  // namespace varmex

#endif
