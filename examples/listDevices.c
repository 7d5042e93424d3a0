/* Lists every device with its slot and its trigger bus. */
#include <inttypes.h>
#include <stdio.h>
#include <varmex/varmex.h>

static void printDevice(varmex_Item* device, tStatusRecord* status) {
  varmex_Item* slot = varmex_openContainingItem(device, varmex_itemType_Slot, status);
  const char* name = varmex_getStringAttribute(device, varmex_str_DeviceName, status);
  const uint32_t bus = varmex_getU32Attribute(device, varmex_u32_DeviceBus, status);
  const uint32_t number = varmex_getU32Attribute(device, varmex_u32_DeviceNumber, status);
  const uint32_t function = varmex_getU32Attribute(device, varmex_u32_DeviceFunction, status);
  /* A slot may lie on no trigger bus, which is no reason to stop: ask with a record of its own. */
  tStatusRecord own = varmex_makeStatus();
  const char* triggerBus = varmex_getStringAttribute(slot, varmex_str_TriggerBusName, &own);
  if (status->code >= 0) {
    printf("%-12s %3" PRIu32 ":%" PRIu32 ".%" PRIu32 "  %s\n", name, bus, number, function,
           triggerBus ? triggerBus : "-");
  }
  varmex_releaseStatus(&own);
  varmex_close(slot);
}

int main(void) {
  tStatusRecord status = varmex_makeStatus();
  varmex_Item* session = varmex_openPXISession(0, &status);
  varmex_ItemContainer* devices =
      varmex_getItemContainer(session, varmex_container_Devices, &status);
  const varmex_ItemIterator end = varmex_ItemIterator_end(devices, &status);
  varmex_ItemIterator position = varmex_ItemIterator_begin(devices, &status);
  while (status.code >= 0 && position != end) {
    varmex_Item* device = varmex_ItemIterator_nextItem(devices, &position, &status);
    printDevice(device, &status);
    varmex_close(device);
  }
  const int result = status.code < 0;
  if (result) fprintf(stderr, "%" PRId32 ": %s\n", status.code, varmex_statusText(&status));
  varmex_destroyItemContainer(devices);
  varmex_close(session);
  varmex_releaseStatus(&status);
  return result;
}
