#include "source/varmex/interfaceUtils.h"

#include "source/varmex/errorCodes.h"

namespace varmex {

varmex_Item* releaseToHandle(std::unique_ptr<Item> item) {
  return reinterpret_cast<varmex_Item*>(item.release());
}

varmex_ItemContainer* releaseToHandle(std::unique_ptr<ItemContainer> container) {
  return reinterpret_cast<varmex_ItemContainer*>(container.release());
}

Item* itemOf(varmex_Item* handle) { return reinterpret_cast<Item*>(handle); }

ItemContainer* containerOf(varmex_ItemContainer* handle) {
  return reinterpret_cast<ItemContainer*>(handle);
}

const Item& checkedItem(varmex_Item* handle) {
  if (!handle) tFailure(kErrorInvalidHandle, OSTREL_HERE).raise();
  return *itemOf(handle);
}

const Session& checkedSession(varmex_Item* handle) {
  const auto* const session = dynamic_cast<const Session*>(&checkedItem(handle));
  if (!session) tFailure(kErrorInvalidHandle, OSTREL_HERE).raise();
  return *session;
}

const Chassis& checkedChassis(varmex_Item* handle) {
  const auto* const chassis = dynamic_cast<const Chassis*>(&checkedItem(handle));
  if (!chassis) {
    tFailure(kErrorInvalidHandle, OSTREL_HERE)
        .debug()
        .text("msg", "Handle is not a chassis handle.")
        .raise();
  }
  return *chassis;
}

const ItemContainer& checkedContainer(varmex_ItemContainer* handle) {
  if (!handle) tFailure(kErrorInvalidHandle, OSTREL_HERE).raise();
  return *containerOf(handle);
}

}  // namespace varmex
