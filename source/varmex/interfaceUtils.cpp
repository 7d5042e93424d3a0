#include "source/varmex/interfaceUtils.h"

#include "source/varmex/errorCodes.h"

namespace varmex {

varmex_ItemContainer* releaseToHandle(std::unique_ptr<ItemContainer> container) {
  return reinterpret_cast<varmex_ItemContainer*>(container.release());
}

tResult<varmex_Item*> releaseToHandle(tResult<std::unique_ptr<Item>> item) {
  if (!item) return item.refusal();
  return reinterpret_cast<varmex_Item*>(item->release());
}

Item* itemOf(varmex_Item* handle) { return reinterpret_cast<Item*>(handle); }

ItemContainer* containerOf(varmex_ItemContainer* handle) {
  return reinterpret_cast<ItemContainer*>(handle);
}

tResult<const Item*> checkedItem(varmex_Item* handle) {
  if (handle) return itemOf(handle);
  return tRefusal(kErrorInvalidHandle, OSTREL_HERE);
}

tResult<const Session*> checkedSession(varmex_Item* handle) {
  const auto item = checkedItem(handle);
  if (!item) return item.refusal();
  if (const auto* const session = dynamic_cast<const Session*>(*item)) return session;
  return tRefusal(kErrorInvalidHandle, OSTREL_HERE);
}

tResult<const Chassis*> checkedChassis(varmex_Item* handle) {
  const auto item = checkedItem(handle);
  if (!item) return item.refusal();
  if (const auto* const chassis = dynamic_cast<const Chassis*>(*item)) return chassis;
  return tRefusal(kErrorInvalidHandle, OSTREL_HERE)
      .debug()
      .text("msg", "Handle is not a chassis handle.");
}

tResult<const ItemContainer*> checkedContainer(varmex_ItemContainer* handle) {
  if (handle) return containerOf(handle);
  return tRefusal(kErrorInvalidHandle, OSTREL_HERE);
}

}  // namespace varmex
