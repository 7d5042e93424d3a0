#ifndef SOURCE_VARMEX_INTERFACEUTILS_H
#define SOURCE_VARMEX_INTERFACEUTILS_H

#include "source/varmex/Chassis.h"
#include "source/varmex/Item.h"
#include "source/varmex/ItemContainer.h"
#include "source/varmex/Session.h"

namespace varmex {

// Between handles and objects. The checks raise varmex_errorInvalidHandle.

varmex_Item* releaseToHandle(std::unique_ptr<Item> item);
varmex_ItemContainer* releaseToHandle(std::unique_ptr<ItemContainer> container);

Item* itemOf(varmex_Item* handle);
ItemContainer* containerOf(varmex_ItemContainer* handle);

const Item& checkedItem(varmex_Item* handle);
const Session& checkedSession(varmex_Item* handle);
const Chassis& checkedChassis(varmex_Item* handle);
const ItemContainer& checkedContainer(varmex_ItemContainer* handle);

}  // namespace varmex

#endif
