#ifndef SOURCE_VARMEX_ITEMCONTAINER_H
#define SOURCE_VARMEX_ITEMCONTAINER_H

#include <boost/shared_ptr.hpp>
#include <vector>

#include "source/varmex/Item.h"

namespace varmex {

// A list of items in the order of lessThan. It does not change once it is made; copies share the
// items.
using ItemContainer = std::vector<boost::shared_ptr<const Item>>;

// Collects what varmex_getItemContainer lists for a container attribute.
tResult<ItemContainer> collectItems(const Item& item, std::uint32_t attribute);

}  // namespace varmex

#endif
