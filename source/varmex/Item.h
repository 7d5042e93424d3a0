#ifndef SOURCE_VARMEX_ITEM_H
#define SOURCE_VARMEX_ITEM_H

#include <boost/noncopyable.hpp>
#include <cstdint>
#include <memory>

#include "ostrel/quarks/result.h"
#include "varmex/varmex.h"

namespace varmex {

class Item;

class ItemVisitor {
 public:
  // Whether the visitor keeps items of that kind. Of others it is handed no more than the way down
  // takes, with all that is refused there.
  virtual bool keeps(std::uint32_t kind) const = 0;

  // A refusal ends the walk and is its answer.
  virtual tResult<> visit(const Item& item) = 0;

  // Where in its section the slot that was walked last names its devices: the next one mostly names
  // them there, too.
  std::size_t namesPlace = 0;

 protected:
  ~ItemVisitor() = default;
};

// An item of the object model: a read-only view of the session's description, which must outlive
// it. All operations may be called from any thread. What the caller or the description is
// the reason for is refused; what is out of the ordinary, as memory, is thrown.
//
// A class that is listed (ItemContainer.h) has a kKind, a tRecord that says all of an item and that
// another one is made of, an item's record() and the order of two records, isLess().
class Item : private boost::noncopyable {
 public:
  virtual ~Item() = default;

  virtual tResult<std::uint32_t> getU32Attribute(std::uint32_t attribute) const = 0;

  // The text lives as long as the item and its session.
  virtual tResult<const char*> getStringAttribute(std::uint32_t attribute) const = 0;

  virtual tResult<std::unique_ptr<Item>> clone() const = 0;
  virtual tResult<std::unique_ptr<Item>> openContainingItem(std::uint32_t kind) const = 0;

  // Orders by kind, then by the class's own keys. Two items of which neither is less are equal.
  virtual bool lessThan(const Item& other) const = 0;
  virtual bool equals(const Item& other) const { return !notEquals(other); }
  virtual bool notEquals(const Item& other) const {
    return lessThan(other) || other.lessThan(*this);
  }

  // Hands the visitor each item of the next level down, as a temporary.
  virtual tResult<> acceptVisitor(ItemVisitor& visitor) const = 0;

  std::uint32_t kind() const { return *getU32Attribute(varmex_u32_ItemType); }
};

// What every getter answers for a number that its class does not serve.
tRefusal attributeNotApplicable(std::uint32_t attribute, const tSourcePosition& position);

// What a getter answers where the description lacks the attribute's value.
tRefusal attributeNotAvailable(std::uint32_t attribute, const tSourcePosition& position);

}  // namespace varmex

#endif
