#ifndef SOURCE_VARMEX_CHASSIS_H
#define SOURCE_VARMEX_CHASSIS_H

#include <string>

#include "ostrel/quarks/synchronization.h"
#include "source/varmex/Item.h"
#include "source/varmex/description.h"

namespace varmex {

// A chassis. It may stand in either description file or in both; what stands in both must agree.
// All is fixed once it is made but for the library of its trigger manager, which is found at first
// need under the chassis's lock and kept.
class Chassis : public Item {
 public:
  Chassis(std::uint32_t number, const tDescription& description);

  std::uint32_t getU32Attribute(std::uint32_t attribute) const override;
  const char* getStringAttribute(std::uint32_t attribute) const override;
  std::unique_ptr<Item> clone() const override;
  std::unique_ptr<Item> openContainingItem(std::uint32_t kind) const override;
  bool lessThan(const Item& other) const override;
  void acceptVisitor(ItemVisitor& visitor) const override;

  std::uint32_t number() const { return fields_.number; }
  const tDescription& description() const { return *fields_.description; }

  // The numbers that an item of the chassis's section lists in either file, ascending, each once.
  std::vector<std::uint32_t> mergedNumbers(const char* item) const;

 private:
  struct tFields {
    std::uint32_t number;
    const tDescription* description;
    std::string section;
    std::string identity;
    std::string descriptionFile;  // empty when it could not be worked out
  };

  explicit Chassis(const tFields& fields);

  const char* mergedItem(const char* item) const;
  const char* serialNumber(std::uint32_t attribute) const;
  std::string makeIdentity() const;
  std::string findDescriptionFile() const;

  std::uint32_t isTriggerManagerNative() const;
  const char* triggerManagerLibrary() const;

  tFields fields_;
  mutable tCriticalSection libraryLock_;
  mutable std::string triggerManagerLibrary_;  // empty until found, then never written again
};

// What contains an item of the chassis: the chassis for its own kind; any other request is passed
// on to it, which refuses.
std::unique_ptr<Item> openChassisOrAbove(std::uint32_t kind, std::uint32_t chassisNumber,
                                         const tDescription& description);

}  // namespace varmex

#endif
