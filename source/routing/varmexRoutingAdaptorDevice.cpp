// A routing device filled from the system description, as a client of the exported query functions;
// and the registry of such devices.

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <forward_list>
#include <map>
#include <memory>
#include <new>

#include "ostrel/quarks/forkProofLock.h"
#include "ostrel/quarks/numbers.h"
#include "ostrel/quarks/throwingStatus.h"
#include "ostrel/quarks/transientFailures.h"
#include "ostrel/quarks/untilUnload.h"
#include "pxiRoutingAdaptor/pxiRoutingAdaptorDevice.h"
#include "varmex/varmex.h"

namespace varmex {

namespace {

using tQueryStatus = tThrowingStatus<tStatusRecord>;

struct tItemCloser {
  void operator()(varmex_Item* item) const { varmex_close(item); }
};
using tItemHandle = std::unique_ptr<varmex_Item, tItemCloser>;

enum tTerminalGroup : std::uint32_t { kTriggerBus = 1, kStar = 2, kDStar = 4 };

struct tDeviceName {
  tDeviceAddress address;
  std::uint32_t groups;
};

// "%d.%d.%d:%d"; what follows is passed over.
tDeviceName parseDeviceName(const std::string& name) {
  std::uint32_t numbers[4] = {};
  const char* text = name.c_str();
  const char* separator = "..:";
  for (std::uint32_t& number : numbers) {
    const tSignedText read = readSigned(text);
    const bool isLast = &number == &numbers[3];
    if (!read.end || (!isLast && *read.end != *separator)) {
      tFailure({varmex_errorInvalidParameter, "varmex_errorInvalidParameter"}, OSTREL_HERE).raise();
    }
    number = static_cast<std::uint32_t>(read.value);
    text = read.end + 1;
    ++separator;
  }
  return {{0, numbers[0], numbers[1], numbers[2]}, numbers[3]};
}

varmex_Item* openSession() {
  tQueryStatus status;
  return varmex_openPXISession(0, status.get());
}

varmex_Item* openDevice(varmex_Item* session, const tDeviceAddress& address) {
  tQueryStatus status;
  return varmex_openDeviceByAddr(session, &address, status.get());
}

varmex_Item* openSlotOf(varmex_Item* device) {
  tQueryStatus status;
  return varmex_openContainingItem(device, varmex_itemType_Slot, status.get());
}

std::string textOf(varmex_Item* item, std::uint32_t attribute) {
  tQueryStatus status;
  const char* const text = varmex_getStringAttribute(item, attribute, status.get());
  return text ? text : "";
}

bool isExpress(varmex_Item* device) {
  tQueryStatus status;
  return varmex_getU32Attribute(device, varmex_u32_DeviceIsExpress, status.get()) == 1;
}

class varmexRoutingAdaptorDevice final : public nCorPxiRoutingAdaptor::pxiRoutingAdaptorDevice {
 public:
  void loadTerminals(const std::string& deviceName) override;
};

// The session is opened ahead of the look at the name: a bad name on an unreadable description is
// reported as the latter.
void varmexRoutingAdaptorDevice::loadTerminals(const std::string& deviceName) {
  const tItemHandle session(openSession());
  const tDeviceName name = parseDeviceName(deviceName);
  const tItemHandle device(openDevice(session.get(), name.address));
  const tItemHandle slot(openSlotOf(device.get()));
  if (name.groups & kTriggerBus) {
    addBusTerminals(textOf(slot.get(), varmex_str_TriggerBusStableName), "PXI_Trig");
  }
  if (name.groups & kStar) {
    addBusTerminals(textOf(slot.get(), varmex_str_StarTriggerLineName), "PXI_Star");
  }
  if (isExpress(device.get()) && (name.groups & kDStar)) {
    addBusTerminals(textOf(slot.get(), varmex_str_DStarTriggerSetName), "PXIe_DStar");
  }
}

using tDevicePtr = boost::shared_ptr<nCorPxiRoutingAdaptor::pxiRoutingAdaptorDevice>;

struct tKnownDevice {
  std::string name;
  tDevicePtr device;
  bool isNamedForNow;  // by a look that could not see all there is
};

// All devices of the process, and the lock under which they are made. The list is whole at every
// moment, also when the process forks; what finds them by name is made of it again then.
struct tDeviceRegistry {
  tForkProofLock lock;
  std::forward_list<tKnownDevice> devices;
  std::map<std::string_view, tKnownDevice*> byName;
  bool isByNameWhole = true;
};

tUntilUnload<tDeviceRegistry> registry;

tKnownDevice makeDevice(const std::string& deviceName) {
  const std::uint64_t failures = transientFailures;
  const auto device = boost::make_shared<varmexRoutingAdaptorDevice>();
  device->loadTerminals(deviceName);
  return {deviceName, device, transientFailures != failures};
}

// The device is there: a failure of this further look changes nothing.
void renameBuses(tKnownDevice& known) {
  try {
    const tKnownDevice now = makeDevice(known.name);
    if (now.isNamedForNow) return;
    known.device->takeBusNames(*now.device);
    known.isNamedForNow = false;
  } catch (const corerr::ExceptionBase&) {
  } catch (const std::bad_alloc&) {
  }
}

void findAgain() {
  registry->isByNameWhole = false;
  std::construct_at(&registry->byName);
  for (tKnownDevice& known : registry->devices) registry->byName.emplace(known.name, &known);
  registry->isByNameWhole = true;
}

tKnownDevice& addDevice(const std::string& deviceName) {
  tKnownDevice& made = registry->devices.emplace_front(makeDevice(deviceName));
  try {
    registry->byName.emplace(made.name, &made);
  } catch (const std::bad_alloc&) {
    registry->devices.pop_front();
    throw;
  }
  return made;
}

}  // namespace

nCorPxiRoutingAdaptor::pxiRoutingAdaptorDevice* nCorPxiRoutingAdaptor::getRoutingDevice(
    const std::string& deviceName) {
  const tForkProofLock::tHeld held(registry->lock);
  if (held.wasAbandoned() || !registry->isByNameWhole) findAgain();
  const auto known = registry->byName.find(deviceName);
  if (known == registry->byName.end()) return addDevice(deviceName).device.get();
  if (known->second->isNamedForNow) renameBuses(*known->second);
  return known->second->device.get();
}

}  // namespace varmex
