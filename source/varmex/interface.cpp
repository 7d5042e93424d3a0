#include <stdexcept>

#include "source/varmex/Slot.h"
#include "source/varmex/TriggerBridge.h"
#include "source/varmex/boundary.h"
#include "source/varmex/errorCodes.h"
#include "source/varmex/interfaceUtils.h"
#include "source/varmex/serviceLibrary.h"

using namespace varmex;

namespace {

// An argument that is refused before anything else is looked at.
tRefusal invalidParameter(tLiteral key, tLiteral message, const tSourcePosition& position) {
  return tRefusal(kErrorInvalidParameter, position).direct().debug().text(key, message);
}

constexpr std::uint32_t kSynchronize = 1;  // bit 0 of the flags

// A failure is only a warning: the description is read as it stands. It is none where an earlier
// warning stands.
void synchronizeDescription(tStatusRecord* status, const tSourcePosition& position) {
  if (status && isFailure(*status)) return;
  try {
    initializeServiceLibrary();
  } catch (const corerr::ExceptionBase& exception) {
    if (!status || status->code != 0) return;
    const std::int32_t wrappedCode = exception.record().code;
    tFailureText text(*status, kWarningFailedSync, position);
    text.i32("wrappedCode", wrappedCode);
  }
}

}  // namespace

varmex_Item* varmex_openPXISession(uint32_t flags, tStatusRecord* status) {
  const tCancellationOff uncancelled;
  if (flags & kSynchronize) synchronizeDescription(status, OSTREL_HERE);
  return callAtBoundary(status, OSTREL_HERE, []() -> tResult<varmex_Item*> {
    return releaseToHandle(std::make_unique<Session>());
  });
}

varmex_Item* varmex_openChassisByNumber(varmex_Item* session, uint32_t chassisNumber,
                                        tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=]() -> tResult<varmex_Item*> {
    const auto object = checkedSession(session);
    if (!object) return object.refusal();
    const auto place = Chassis::find(chassisNumber, (*object)->description());
    if (!place) return place.refusal();
    return releaseToHandle(std::make_unique<Chassis>(*place));
  });
}

varmex_Item* varmex_openSlotByNumber(varmex_Item* chassis, uint32_t slotNumber,
                                     tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=]() -> tResult<varmex_Item*> {
    const auto object = checkedChassis(chassis);
    if (!object) return object.refusal();
    const auto place = Slot::find((*object)->number(), slotNumber, (*object)->description());
    if (!place) return place.refusal();
    return releaseToHandle(std::make_unique<Slot>(*place));
  });
}

// The arguments are looked at before the handle.
varmex_Item* varmex_openDeviceByAddr(varmex_Item* session, const tDeviceAddress* address,
                                     tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=]() -> tResult<varmex_Item*> {
    if (!address) return invalidParameter("msg", "parameter addr is NULL", OSTREL_HERE);
    if (address->reserved != 0) {
      return invalidParameter("msg", "reserved parameter must be set to 0", OSTREL_HERE);
    }
    const auto object = checkedSession(session);
    if (!object) return object.refusal();
    return releaseToHandle((*object)->openDevice(*address));
  });
}

// The one function without an entry check: a record that holds an error does not stop the wait. It
// is also the one in which a thread can be cancelled, while it sleeps.
varmex_WaitResult varmex_waitForSessionInvalidation(varmex_Item* session, uint32_t timeout,
                                                    tStatusRecord* status) {
  const tCancellationInSleeps inSleeps;
  return callInsideBoundary(status, OSTREL_HERE, [=]() -> tResult<varmex_WaitResult> {
    const auto object = checkedSession(session);
    if (!object) return object.refusal();
    return (*object)->waitForInvalidation(timeout);
  });
}

void varmex_cancelWaitForInvalidation(varmex_Item* session) {
  const tCancellationOff uncancelled;
  callInsideBoundary(nullptr, OSTREL_HERE, [=]() -> tResult<> {
    const auto object = checkedSession(session);
    if (object) (*object)->cancelWait();
    return kDone;
  });
}

varmex_Item* varmex_openContainingItem(varmex_Item* item, uint32_t kind, tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=]() -> tResult<varmex_Item*> {
    const auto object = checkedItem(item);
    if (!object) return object.refusal();
    return releaseToHandle((*object)->openContainingItem(kind));
  });
}

// The exception leaves from here, where nothing waits to be destroyed: hosts of another compiler on
// Windows can't run this one's destructors on its way.
uint32_t varmex_getU32Attribute(varmex_Item* item, uint32_t attribute, tStatusRecord* status) {
  bool isOutOfRange = false;
  const uint32_t value =
      callAtBoundary(status, OSTREL_HERE, [=, &isOutOfRange]() -> tResult<std::uint32_t> {
        const auto object = checkedItem(item);
        if (!object) return object.refusal();
        try {
          return (*object)->getU32Attribute(attribute);
        } catch (const std::out_of_range&) {
          isOutOfRange = true;
          return std::uint32_t{0};
        }
      });
  if (isOutOfRange) throw std::out_of_range(kLineOutOfRange);
  return value;
}

const char* varmex_getStringAttribute(varmex_Item* item, uint32_t attribute,
                                      tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=]() -> tResult<const char*> {
    const auto object = checkedItem(item);
    if (!object) return object.refusal();
    return (*object)->getStringAttribute(attribute);
  });
}

varmex_Item* varmex_duplicate(varmex_Item* item, tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=]() -> tResult<varmex_Item*> {
    const auto object = checkedItem(item);
    if (!object) return object.refusal();
    return releaseToHandle((*object)->clone());
  });
}

void varmex_close(varmex_Item* item) {
  const tCancellationOff uncancelled;
  delete itemOf(item);
}

varmex_ItemContainer* varmex_getItemContainer(varmex_Item* item, uint32_t attribute,
                                              tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=]() -> tResult<varmex_ItemContainer*> {
    const auto object = checkedItem(item);
    if (!object) return object.refusal();
    auto items = collectItems(**object, attribute);
    if (!items) return items.refusal();
    return releaseToHandle(std::make_unique<ItemContainer>(std::move(*items)));
  });
}

varmex_ItemContainer* varmex_duplicateItemContainer(varmex_ItemContainer* container,
                                                    tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=]() -> tResult<varmex_ItemContainer*> {
    const auto items = checkedContainer(container);
    if (!items) return items.refusal();
    return releaseToHandle(std::make_unique<ItemContainer>(**items));
  });
}

void varmex_destroyItemContainer(varmex_ItemContainer* container) {
  const tCancellationOff uncancelled;
  delete containerOf(container);
}

varmex_ItemIterator varmex_ItemIterator_begin(varmex_ItemContainer* container,
                                              tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=]() -> tResult<varmex_ItemIterator> {
    const auto items = checkedContainer(container);
    if (!items) return items.refusal();
    return 0U;
  });
}

varmex_ItemIterator varmex_ItemIterator_end(varmex_ItemContainer* container,
                                            tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=]() -> tResult<varmex_ItemIterator> {
    const auto items = checkedContainer(container);
    if (!items) return items.refusal();
    return (**items)->size();
  });
}

varmex_Item* varmex_ItemIterator_nextItem(varmex_ItemContainer* container,
                                          varmex_ItemIterator* position, tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=]() -> tResult<varmex_Item*> {
    if (!position) {
      return invalidParameter("message", "ItemIterator pointer cannot be null!", OSTREL_HERE);
    }
    const auto items = checkedContainer(container);
    if (!items) return items.refusal();
    const ItemList& list = ***items;
    if (*position >= list.size()) {
      return tRefusal(kErrorIterationFailure, OSTREL_HERE)
          .debug()
          .text("message", "attempted iteration past end of container");
    }
    // The position moves first: it has done so when the copy fails, too.
    return releaseToHandle(list.copy((*position)++));
  });
}
