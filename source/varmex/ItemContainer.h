#ifndef SOURCE_VARMEX_ITEMCONTAINER_H
#define SOURCE_VARMEX_ITEMCONTAINER_H

#include <boost/shared_ptr.hpp>
#include <memory>

#include "source/varmex/Item.h"

namespace varmex {

// Items of one kind in the order of lessThan. It does not change once it is made.
//
// It holds the items' records side by side, and an item is made when it is handed out: of the
// thousands that a list may have, each costs a few bytes in one block that grows with the list.
class ItemList : private boost::noncopyable {
 public:
  virtual ~ItemList() = default;

  virtual std::size_t size() const = 0;

  // An item of its own for whoever asks. The position is below the size.
  virtual std::unique_ptr<Item> copy(std::size_t position) const = 0;
};

// Copies share the list.
using ItemContainer = boost::shared_ptr<const ItemList>;

// Collects what varmex_getItemContainer lists for a container attribute.
tResult<ItemContainer> collectItems(const Item& item, std::uint32_t attribute);

}  // namespace varmex

#endif
