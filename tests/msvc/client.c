/* A program of the other compiler family: its own default calling convention, its own linker.
 * Prints the model of each chassis; ends with 0 when the bridge that it finds, if any, answers or
 * raises. */
#include <stddef.h>
#include <varmex/telmar_ra_varmex.h>
#include <varmex/varmex.h>

int __cdecl printf(const char* format, ...);
__declspec(noreturn) void __cdecl exit(int code);
unsigned long __cdecl _exception_code(void);

_Static_assert(offsetof(tStatusRecord, capacity) == 4, "capacity");
_Static_assert(offsetof(tStatusRecord, text) == 16, "text");
_Static_assert(offsetof(tDeviceAddress, function) == 12, "function");
_Static_assert(sizeof(varmex_ItemIterator) == 8, "iterator");
_Static_assert(sizeof(varmex_WaitResult) == 4, "wait result");
_Static_assert(sizeof(enum {varmex_test = varmex_errorMemoryFull}) == 4, "enums");
_Static_assert(sizeof(bool) == 1, "bool");

/* The lines of the bridge, or -1 for the exception of the library's own compiler. */
static long lineMapping(varmex_Item* bridge, tStatusRecord* status) {
  __try {
    return (long)varmex_getU32Attribute(bridge, varmex_u32_BridgeLineMapping0, status);
  } __except (_exception_code() == varmex_systemException) {
    return -1;
  }
}

static void list(varmex_Item* session, uint32_t what, tStatusRecord* status,
                 void (*show)(varmex_Item*, tStatusRecord*)) {
  varmex_ItemContainer* items = varmex_getItemContainer(session, what, status);
  varmex_ItemIterator at = varmex_ItemIterator_begin(items, status);
  while (status->code >= 0 && at != varmex_ItemIterator_end(items, status)) {
    varmex_Item* item = varmex_ItemIterator_nextItem(items, &at, status);
    show(item, status);
    varmex_close(item);
  }
  varmex_destroyItemContainer(items);
}

static void showChassis(varmex_Item* chassis, tStatusRecord* status) {
  printf("chassis %u: %s\n", varmex_getU32Attribute(chassis, varmex_u32_ChassisNumber, status),
         varmex_getStringAttribute(chassis, varmex_str_ChassisModel, status));
}

static void showBridge(varmex_Item* bridge, tStatusRecord* status) {
  const long first = lineMapping(bridge, status);
  for (int i = 0; i < 100; ++i) {
    if (lineMapping(bridge, status) != first) exit(2);
  }
  printf("bridge: %ld\n", first);
}

int __cdecl mainCRTStartup(void) {
  tStatusRecord status = varmex_makeStatus();
  varmex_Item* session;
  if (status.reallocate != varmex_reallocateStatus) exit(3);
  session = varmex_openPXISession(0, &status);
  list(session, varmex_container_Chassis, &status, showChassis);
  list(session, varmex_container_TriggerBridges, &status, showBridge);
  varmex_close(session);
  printf("code %d\n", status.code);
  exit(status.code < 0);
}
