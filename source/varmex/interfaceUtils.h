#ifndef SOURCE_VARMEX_INTERFACEUTILS_H
#define SOURCE_VARMEX_INTERFACEUTILS_H

#include "source/varmex/Chassis.h"
#include "source/varmex/Item.h"
#include "source/varmex/ItemContainer.h"
#include "source/varmex/Session.h"

namespace varmex {

// Between handles and objects. The checks refuse with varmex_errorInvalidHandle.

varmex_ItemContainer* releaseToHandle(std::unique_ptr<ItemContainer> container);
tResult<varmex_Item*> releaseToHandle(tResult<std::unique_ptr<Item>> item);

Item* itemOf(varmex_Item* handle);
ItemContainer* containerOf(varmex_ItemContainer* handle);

tResult<const Item*> checkedItem(varmex_Item* handle);
tResult<const Session*> checkedSession(varmex_Item* handle);
tResult<const Chassis*> checkedChassis(varmex_Item* handle);
tResult<const ItemContainer*> checkedContainer(varmex_ItemContainer* handle);

}  // namespace varmex

#endif
