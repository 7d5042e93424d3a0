#include "source/varmex/Slot.h"
#include "source/varmex/boundary.h"
#include "source/varmex/errorCodes.h"
#include "source/varmex/interfaceUtils.h"
#include "source/varmex/serviceLibrary.h"

using namespace varmex;

namespace {

// An argument that is refused before anything else is looked at.
void reportInvalidParameter(tStatusRecord& record, const char* key, const char* message,
                            const tSourcePosition& position) {
  tFailureText text(record, kErrorInvalidParameter, position);
  text.open("varmex_debug");
  text.text(key, message);
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
  return callAtBoundary(status, OSTREL_HERE, [](tStatusRecord&) {
    return releaseToHandle(std::make_unique<Session>());
  });
}

varmex_Item* varmex_openChassisByNumber(varmex_Item* session, uint32_t chassisNumber,
                                        tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=](tStatusRecord&) {
    const tDescription& description = checkedSession(session).description();
    return releaseToHandle(std::make_unique<Chassis>(chassisNumber, description));
  });
}

varmex_Item* varmex_openSlotByNumber(varmex_Item* chassis, uint32_t slotNumber,
                                     tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=](tStatusRecord&) {
    const Chassis& object = checkedChassis(chassis);
    return releaseToHandle(
        std::make_unique<Slot>(object.number(), slotNumber, object.description()));
  });
}

// The arguments are looked at before the handle.
varmex_Item* varmex_openDeviceByAddr(varmex_Item* session, const tDeviceAddress* address,
                                     tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=](tStatusRecord& record) -> varmex_Item* {
    if (!address) {
      reportInvalidParameter(record, "msg", "parameter addr is NULL", OSTREL_HERE);
      return nullptr;
    }
    if (address->reserved != 0) {
      reportInvalidParameter(record, "msg", "reserved parameter must be set to 0", OSTREL_HERE);
      return nullptr;
    }
    return releaseToHandle(checkedSession(session).openDevice(*address));
  });
}

// The one function without an entry check: a record that holds an error does not stop the wait. It
// is also the one in which a thread can be cancelled, while it sleeps.
varmex_WaitResult varmex_waitForSessionInvalidation(varmex_Item* session, uint32_t timeout,
                                                    tStatusRecord* status) {
  tDiscardedStatus discarded;
  return callInsideBoundary(
      status ? *status : discarded.record(), OSTREL_HERE,
      [=](tStatusRecord&) { return checkedSession(session).waitForInvalidation(timeout); });
}

void varmex_cancelWaitForInvalidation(varmex_Item* session) {
  const tCancellationOff uncancelled;
  tDiscardedStatus discarded;
  callInsideBoundary(discarded.record(), OSTREL_HERE,
                     [=](tStatusRecord&) { checkedSession(session).cancelWait(); });
}

varmex_Item* varmex_openContainingItem(varmex_Item* item, uint32_t kind, tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=](tStatusRecord&) {
    return releaseToHandle(checkedItem(item).openContainingItem(kind));
  });
}

uint32_t varmex_getU32Attribute(varmex_Item* item, uint32_t attribute, tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=](tStatusRecord&) {
    return checkedItem(item).getU32Attribute(attribute);
  });
}

const char* varmex_getStringAttribute(varmex_Item* item, uint32_t attribute,
                                      tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=](tStatusRecord&) {
    return checkedItem(item).getStringAttribute(attribute);
  });
}

varmex_Item* varmex_duplicate(varmex_Item* item, tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE,
                        [=](tStatusRecord&) { return releaseToHandle(checkedItem(item).clone()); });
}

void varmex_close(varmex_Item* item) {
  const tCancellationOff uncancelled;
  delete itemOf(item);
}

varmex_ItemContainer* varmex_getItemContainer(varmex_Item* item, uint32_t attribute,
                                              tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=](tStatusRecord&) {
    return releaseToHandle(
        std::make_unique<ItemContainer>(collectItems(checkedItem(item), attribute)));
  });
}

varmex_ItemContainer* varmex_duplicateItemContainer(varmex_ItemContainer* container,
                                                    tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=](tStatusRecord&) {
    return releaseToHandle(std::make_unique<ItemContainer>(checkedContainer(container)));
  });
}

void varmex_destroyItemContainer(varmex_ItemContainer* container) {
  const tCancellationOff uncancelled;
  delete containerOf(container);
}

varmex_ItemIterator varmex_ItemIterator_begin(varmex_ItemContainer* container,
                                              tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=](tStatusRecord&) {
    checkedContainer(container);
    return varmex_ItemIterator{0};
  });
}

varmex_ItemIterator varmex_ItemIterator_end(varmex_ItemContainer* container,
                                            tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=](tStatusRecord&) {
    return varmex_ItemIterator{checkedContainer(container).size()};
  });
}

varmex_Item* varmex_ItemIterator_nextItem(varmex_ItemContainer* container,
                                          varmex_ItemIterator* position, tStatusRecord* status) {
  return callAtBoundary(status, OSTREL_HERE, [=](tStatusRecord& record) -> varmex_Item* {
    if (!position) {
      reportInvalidParameter(record, "message", "ItemIterator pointer cannot be null!",
                             OSTREL_HERE);
      return nullptr;
    }
    const ItemContainer& items = checkedContainer(container);
    if (*position >= items.size()) {
      tFailure(kErrorIterationFailure, OSTREL_HERE)
          .debug()
          .text("message", "attempted iteration past end of container")
          .raise();
    }
    // The position moves first: it has done so when the clone fails, too.
    const Item& item = *items[*position];
    ++*position;
    return releaseToHandle(item.clone());
  });
}
