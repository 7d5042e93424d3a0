// varmex in C++17: owning types over the C interface, which they need and nothing else.
//
// Every type owns what it holds and gives it back at its end. Items, lists and waits keep their
// session open and routes their routing session, so the order of destruction does not matter. A
// copy of an item or a session is the same handle twice; lists and routes can only be moved.
//
// Failures are thrown as varmex::Error. A typed attribute `x()` throws it; `xIfAny()` answers
// nothing where the item has no such thing (varmex::meansNothing) and throws any other failure.
// What an attribute means and when it fails is told in varmex.h, under the attribute's name there.
//
// A list opens everything below its item, also below what it lists, and fails as a whole with the
// first fault: session.chassis() because of one slot, chassis.slots() because of a bridge that
// can't be opened. Who wants the rest all the same takes eachChassis() and eachSlot(), which go on
// behind what can't be opened, and asks below for one item at a time.
//
// Threads: as in varmex.h. Any number of threads may use one object, which must not be moved or
// destroyed meanwhile.
#ifndef VARMEX_VARMEX_HPP
#define VARMEX_VARMEX_HPP

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#if defined(_MSC_VER)
#include <excpt.h>
#endif

#include "varmex/telmar_ra_varmex.h"
#include "varmex/varmex.h"

namespace varmex {
inline namespace cpp1 {

namespace detail {

// One scalar of a JSON text with its key; the key of an array's element is that of the array.
struct JsonPair {
  std::string key;
  std::string value;  // a string's content, any other value as written
};

inline void appendUtf8(std::string& text, unsigned long point) {
  if (point < 0x80) {
    text += static_cast<char>(point);
  } else if (point < 0x800) {
    text += static_cast<char>(0xC0 | point >> 6);
    text += static_cast<char>(0x80 | (point & 0x3F));
  } else {
    text += static_cast<char>(0xE0 | point >> 12);
    text += static_cast<char>(0x80 | (point >> 6 & 0x3F));
    text += static_cast<char>(0x80 | (point & 0x3F));
  }
}

// Takes the string whose opening quote stands at `at`; `at` is then behind its end.
inline std::string takeJsonString(const std::string& json, std::size_t& at) {
  static const std::string escapes = "bfnrt", meanings = "\b\f\n\r\t";
  std::string content;
  for (++at; at < json.size() && json[at] != '"'; ++at) {
    if (json[at] != '\\' || at + 1 >= json.size()) {
      content += json[at];
    } else if (json[++at] == 'u') {
      const std::string digits = json.substr(at + 1, 4);
      appendUtf8(content, std::strtoul(digits.c_str(), nullptr, 16));
      at += digits.size();
    } else {
      const std::size_t escape = escapes.find(json[at]);
      content += escape == std::string::npos ? json[at] : meanings[escape];
    }
  }
  ++at;
  return content;
}

// The scalars of a JSON text in their order, whatever their depth.
inline std::vector<JsonPair> flattenJson(const std::string& json) {
  static const char* const structure = " \t\r\n{}[],:\"";
  std::vector<JsonPair> pairs;
  std::string key;
  for (std::size_t at = 0; at < json.size();) {
    if (json[at] == '"') {
      std::string text = takeJsonString(json, at);
      const std::size_t next = json.find_first_not_of(" \t\r\n", at);
      if (next != std::string::npos && json[next] == ':') {
        key = std::move(text);
      } else {
        pairs.push_back({key, std::move(text)});
      }
    } else if (std::string(structure).find(json[at]) != std::string::npos) {
      ++at;
    } else {
      const std::size_t end = json.find_first_of(structure, at);
      pairs.push_back({key, json.substr(at, end - at)});
      at = end;
    }
  }
  return pairs;
}

inline std::string quoteJson(const std::string& text) {
  std::string quoted = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') {
      (quoted += '\\') += byte;
    } else if (static_cast<unsigned char>(byte) < 0x20) {
      const char* const digits = "0123456789abcdef";
      ((quoted += "\\u00") += digits[byte >> 4]) += digits[byte & 15];
    } else {
      quoted += byte;
    }
  }
  return quoted += '"';
}

}  // namespace detail

// A failed call, or a warning.
class Error : public std::runtime_error {
 public:
  Error(std::int32_t code, const char* json) : Error(code, std::string(json), {}, {}) {}

  std::int32_t code() const noexcept { return code_; }

  // The code's symbolic name, such as "varmex_errorUnknownItem"; empty for a code without one.
  const std::string& constant() const noexcept { return constant_; }

  // What the status text tells of the occasion: "name: value" pairs between commas, maybe none.
  const std::string& detail() const noexcept { return detail_; }

  // The status text as the library wrote it.
  const std::string& json() const noexcept { return json_; }

 private:
  Error(std::int32_t code, std::string json, std::string constant, std::string detail)
      : std::runtime_error(describe(code, json, constant, detail)),
        code_(code),
        constant_(std::move(constant)),
        detail_(std::move(detail)),
        json_(std::move(json)) {}

  static std::string describe(std::int32_t code, const std::string& json, std::string& constant,
                              std::string& text) {
    for (const detail::JsonPair& pair : detail::flattenJson(json)) {
      if (pair.key == "error_constant") {
        constant = pair.value;
      } else if (pair.key != "file" && pair.key != "line" && pair.key != "component") {
        if (!text.empty()) text += ", ";
        text += pair.key + ": " + pair.value;
      }
    }
    std::string message = (constant.empty() ? "varmex" : constant) + " (" + std::to_string(code);
    message += text.empty() ? ")" : "): " + text;
    return message;
  }

  std::int32_t code_;
  std::string constant_;
  std::string detail_;
  std::string json_;
};

// Whether a code says "this item has no such thing".
inline bool meansNothing(std::int32_t code) {
  return code == varmex_errorAttributeNotApplicable ||
         code == varmex_errorInformationNotAvailable || code == varmex_errorStarController ||
         code == varmex_errorNotConnected || code == varmex_errorTriggerManagerLibraryNotFound;
}

// The status record of one call.
class Status {
 public:
  Status() : record_(varmex_makeStatus()) {}
  Status(const Status&) = delete;
  Status& operator=(const Status&) = delete;
  ~Status() { varmex_releaseStatus(&record_); }

  operator tStatusRecord*() { return &record_; }
  std::int32_t code() const { return record_.code; }
  Error error() const { return {code(), varmex_statusText(&record_)}; }
  void check() const {
    if (code() < 0) throw error();
  }

 private:
  tStatusRecord record_;
};

namespace detail {

struct Closer {
  void operator()(telmar_ra_Session* session) const { telmar_ra_varmex_destroySession(session); }
  void operator()(telmar_ra_TerminalIterator* iterator) const {
    telmar_ra_varmex_TerminalIterator_destroy(iterator);
  }
};

using SessionHandle = std::shared_ptr<varmex_Item>;

// What closes an item or a list keeps their session open until then.
struct ItemCloser {
  SessionHandle session;
  void operator()(varmex_Item* item) const { varmex_close(item); }
  void operator()(varmex_ItemContainer* list) const { varmex_destroyItemContainer(list); }
};

// A text that the adaptor replied, in a buffer from realloc.
struct Reply {
  Reply() = default;
  Reply(const Reply&) = delete;
  Reply& operator=(const Reply&) = delete;
  ~Reply() { std::free(text); }
  char* text = nullptr;
};

}  // namespace detail

namespace detail {

#if defined(_MSC_VER)
// Takes the one exception of the library, which this compiler can't catch as such.
inline std::uint32_t getU32(varmex_Item* item, std::uint32_t attribute, tStatusRecord* status,
                            bool* isOutOfRange) {
  __try {
    return varmex_getU32Attribute(item, attribute, status);
  } __except (_exception_code() == varmex_systemException) {
    *isOutOfRange = true;
    return 0;
  }
}

inline std::uint32_t getU32(varmex_Item* item, std::uint32_t attribute, tStatusRecord* status) {
  bool isOutOfRange = false;
  const std::uint32_t value = getU32(item, attribute, status, &isOutOfRange);
  if (isOutOfRange) throw std::out_of_range("invalid bitset<N> position");
  return value;
}
#else
inline std::uint32_t getU32(varmex_Item* item, std::uint32_t attribute, tStatusRecord* status) {
  return varmex_getU32Attribute(item, attribute, status);
}
#endif

}  // namespace detail

enum class Kind : std::uint32_t {
  session = varmex_itemType_Session,
  chassis = varmex_itemType_Chassis,
  slot = varmex_itemType_Slot,
  device = varmex_itemType_Device,
  triggerBridge = varmex_itemType_TriggerBridge
};

template <class Type>
class List;
class Item;
class Chassis;
class Slot;
class Device;
class TriggerBridge;
struct Module;
struct ModuleAttempt;

// What all items have in common, by attribute number.
class ItemBase {
 public:
  Kind kind() const { return static_cast<Kind>(u32(varmex_u32_ItemType)); }

  std::uint32_t u32(std::uint32_t attribute) const {
    Status status;
    const std::uint32_t value = detail::getU32(handle(), attribute, status);
    status.check();
    return value;
  }
  std::string text(std::uint32_t attribute) const {
    Status status;
    const char* const value = varmex_getStringAttribute(handle(), attribute, status);
    status.check();
    return value;
  }
  std::optional<std::uint32_t> u32IfAny(std::uint32_t attribute) const {
    Status status;
    const std::uint32_t value = detail::getU32(handle(), attribute, status);
    if (meansNothing(status.code())) return std::nullopt;
    status.check();
    return value;
  }
  std::optional<std::string> textIfAny(std::uint32_t attribute) const {
    Status status;
    const char* const value = varmex_getStringAttribute(handle(), attribute, status);
    if (meansNothing(status.code())) return std::nullopt;
    status.check();
    return value;
  }

  // The items of a container attribute (varmex_container_...), as the class that it lists or as
  // plain Items.
  template <class Type = Item>
  List<Type> list(std::uint32_t container) const;

  // The item's handle in the C interface, valid as long as this object.
  varmex_Item* handle() const { return handle_.get(); }

 protected:
  // Takes a handle over; `session` is what it must not outlive, null for a session itself.
  ItemBase(varmex_Item* handle, detail::SessionHandle session)
      : session_(session), handle_(handle, detail::ItemCloser{std::move(session)}) {}

  const detail::SessionHandle& session() const { return session_ ? session_ : handle_; }

  template <class Type>
  Type containing(std::uint32_t kind) const {
    Status status;
    Type item(varmex_openContainingItem(handle(), kind, status), session());
    status.check();
    return item;
  }

 private:
  detail::SessionHandle session_;
  detail::SessionHandle handle_;
};

// An item of any kind.
class Item : public ItemBase {
 public:
  Item(varmex_Item* handle, detail::SessionHandle session) : ItemBase(handle, std::move(session)) {}
};

// What a container holds, in its order: a range whose elements are opened as they are reached.
template <class Type>
class List {
 public:
  class iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Type;
    using difference_type = std::ptrdiff_t;
    using pointer = const Type*;
    using reference = Type;

    Type operator*() const {
      Status status;
      varmex_ItemIterator position = position_;
      Type item(varmex_ItemIterator_nextItem(list_->handle_.get(), &position, status),
                list_->handle_.get_deleter().session);
      status.check();
      return item;
    }
    iterator& operator++() {
      ++position_;
      return *this;
    }
    iterator operator++(int) {
      const iterator before = *this;
      ++position_;
      return before;
    }
    bool operator==(const iterator& other) const { return position_ == other.position_; }
    bool operator!=(const iterator& other) const { return position_ != other.position_; }

   private:
    friend class List;
    iterator(const List* list, varmex_ItemIterator position) : list_(list), position_(position) {}

    const List* list_;
    varmex_ItemIterator position_;
  };

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  iterator begin() const { return {this, 0}; }
  iterator end() const { return {this, size_}; }
  Type operator[](std::size_t index) const { return *iterator(this, index); }

 private:
  friend class ItemBase;
  List(varmex_ItemContainer* handle, detail::SessionHandle session, Status& status)
      : handle_(handle, detail::ItemCloser{std::move(session)}) {
    size_ = static_cast<std::size_t>(varmex_ItemIterator_end(handle, status));
    status.check();
  }

  std::unique_ptr<varmex_ItemContainer, detail::ItemCloser> handle_;
  std::size_t size_;
};

template <class Type>
List<Type> ItemBase::list(std::uint32_t container) const {
  Status status;
  varmex_ItemContainer* const handle = varmex_getItemContainer(this->handle(), container, status);
  return List<Type>(handle, session(), status);
}

// One of a list that goes on behind what can't be opened: the item, or why there is none.
template <class Type>
struct Attempt {
  std::uint32_t number = 0;  // of the chassis or slot
  std::optional<Type> item;
  std::optional<Error> error;
};

namespace detail {

// The list; if it fails, what opens by the numbers that `getNumbers(failure)` answers.
template <class Type, class GetList, class GetNumbers, class Open>
std::vector<Attempt<Type>> openEach(GetList getList, GetNumbers getNumbers, Open open) {
  std::vector<Attempt<Type>> attempts;
  std::vector<std::uint32_t> numbers;
  try {
    for (Type item : getList()) {
      const std::uint32_t number = item.number();
      attempts.push_back({number, std::move(item), std::nullopt});
    }
    return attempts;
  } catch (const Error& failure) {
    attempts.clear();
    numbers = getNumbers(failure);
  }
  for (const std::uint32_t number : numbers) {
    try {
      attempts.push_back({number, open(number), std::nullopt});
    } catch (const Error& error) {
      attempts.push_back({number, std::nullopt, error});
    }
  }
  return attempts;
}

// The same where nobody knows the numbers: all that exist up to 255, and the one that the failure
// names under `key`, whether it exists or not.
template <class Type, class GetList, class Open>
std::vector<Attempt<Type>> openEachUpTo255(GetList getList, const char* key, Open open) {
  std::vector<std::uint32_t> named;
  const auto getNumbers = [&](const Error& failure) {
    for (const JsonPair& pair : flattenJson(failure.json())) {
      if (pair.key != key) continue;
      named = {static_cast<std::uint32_t>(std::strtoul(pair.value.c_str(), nullptr, 10))};
    }
    std::vector<std::uint32_t> numbers(256);
    for (std::uint32_t number = 0; number < 256; ++number) numbers[number] = number;
    if (!named.empty() && named.front() > 255) numbers.push_back(named.front());
    return numbers;
  };
  std::vector<Attempt<Type>> attempts = openEach<Type>(getList, getNumbers, open);
  std::vector<Attempt<Type>> known;
  for (Attempt<Type>& attempt : attempts) {
    const bool isNamed = !named.empty() && named.front() == attempt.number;
    if (isNamed || !attempt.error || attempt.error->code() != varmex_errorUnknownItem) {
      known.push_back(std::move(attempt));
    }
  }
  return known;
}

}  // namespace detail

// A typed attribute and its variant that answers nothing where there is none.
#define VARMEX_U32_ATTRIBUTE(name, attribute)                        \
  std::uint32_t name() const { return u32(varmex_u32_##attribute); } \
  std::optional<std::uint32_t> name##IfAny() const { return u32IfAny(varmex_u32_##attribute); }
#define VARMEX_TEXT_ATTRIBUTE(name, attribute)                      \
  std::string name() const { return text(varmex_str_##attribute); } \
  std::optional<std::string> name##IfAny() const { return textIfAny(varmex_str_##attribute); }

// One trigger bridge of a chassis.
class TriggerBridge : public ItemBase {
 public:
  TriggerBridge(varmex_Item* handle, detail::SessionHandle session)
      : ItemBase(handle, std::move(session)) {}

  VARMEX_U32_ATTRIBUTE(chassisNumber, ChassisNumber)
  VARMEX_U32_ATTRIBUTE(number, BridgeNumber)
  VARMEX_U32_ATTRIBUTE(sourceTriggerBus, BridgeSourceTriggerBus)
  VARMEX_U32_ATTRIBUTE(destinationTriggerBus, BridgeDestinationTriggerBus)

  // The destination lines of a source line 0 to 7, bit n for line n. Throws Error with
  // varmex_errorInvalidParameter for another source line, and std::out_of_range where the
  // description names a destination line 8.
  std::uint32_t lineMapping(std::uint32_t sourceLine) const {
    if (sourceLine > 7) {
      throw Error(varmex_errorInvalidParameter,
                  "{\"error_constant\":\"varmex_errorInvalidParameter\",\"varmex_debug\":"
                  "{\"message\":\"a bridge has the source lines 0 to 7\"}}");
    }
    return u32(varmex_u32_BridgeLineMapping0 + sourceLine);
  }

  inline Chassis chassis() const;
};

// One PCI function of a module.
class Device : public ItemBase {
 public:
  Device(varmex_Item* handle, detail::SessionHandle session)
      : ItemBase(handle, std::move(session)) {}

  VARMEX_TEXT_ATTRIBUTE(name, DeviceName)
  VARMEX_U32_ATTRIBUTE(chassisNumber, ChassisNumber)
  VARMEX_U32_ATTRIBUTE(slotNumber, SlotNumber)
  VARMEX_U32_ATTRIBUTE(bus, DeviceBus)
  VARMEX_U32_ATTRIBUTE(number, DeviceNumber)
  VARMEX_U32_ATTRIBUTE(function, DeviceFunction)
  VARMEX_TEXT_ATTRIBUTE(vendor, DeviceVendor)
  VARMEX_TEXT_ATTRIBUTE(model, DeviceModel)
  VARMEX_TEXT_ATTRIBUTE(instanceName, DeviceInstanceName)
  VARMEX_TEXT_ATTRIBUTE(addressInfo, DeviceAddressInfo)
  VARMEX_TEXT_ATTRIBUTE(occupiedSlotList, PeripheralModuleOccupiedSlotList)
  VARMEX_U32_ATTRIBUTE(linkWidthMax, PeripheralModuleLinkWidthMax)
  VARMEX_U32_ATTRIBUTE(linkWidthNegotiated, PeripheralModuleLinkWidthNegotiated)
  bool isExpress() const { return u32(varmex_u32_DeviceIsExpress) != 0; }

  inline Slot slot() const;
  inline Chassis chassis() const;
};

// One slot of a chassis.
class Slot : public ItemBase {
 public:
  Slot(varmex_Item* handle, detail::SessionHandle session) : ItemBase(handle, std::move(session)) {}

  VARMEX_U32_ATTRIBUTE(chassisNumber, ChassisNumber)
  VARMEX_U32_ATTRIBUTE(number, SlotNumber)
  VARMEX_U32_ATTRIBUTE(type, SlotType)
  VARMEX_U32_ATTRIBUTE(occupyingModuleSlot, OccupyingModuleSlot)
  VARMEX_U32_ATTRIBUTE(linkWidth1, PeripheralSlotLinkWidth1)
  VARMEX_U32_ATTRIBUTE(linkWidth2, PeripheralSlotLinkWidth2)
  VARMEX_U32_ATTRIBUTE(linkOrigin1, SystemSlotLinkOrigin1)
  VARMEX_U32_ATTRIBUTE(linkOrigin2, SystemSlotLinkOrigin2)
  VARMEX_U32_ATTRIBUTE(systemLinkCount, SystemSlotLinkCount)
  VARMEX_TEXT_ATTRIBUTE(systemVendor, SystemSlotVendor)
  VARMEX_TEXT_ATTRIBUTE(systemModel, SystemSlotModel)
  VARMEX_TEXT_ATTRIBUTE(systemInstanceName, SystemSlotInstanceName)
  VARMEX_TEXT_ATTRIBUTE(systemAddressInfo, SystemSlotAddressInfo)
  VARMEX_TEXT_ATTRIBUTE(pciSlotPath, PCISlotPath)
  VARMEX_U32_ATTRIBUTE(pciSlotPathRootBus, PCISlotPathRootBus)
  VARMEX_TEXT_ATTRIBUTE(localBusLeft, LocalBusLeft)
  VARMEX_TEXT_ATTRIBUTE(localBusRight, LocalBusRight)
  VARMEX_U32_ATTRIBUTE(triggerBusNumber, TriggerBusNumber)
  VARMEX_TEXT_ATTRIBUTE(triggerBusName, TriggerBusName)
  VARMEX_TEXT_ATTRIBUTE(triggerBusStableName, TriggerBusStableName)
  VARMEX_U32_ATTRIBUTE(starTriggerNumber, StarTriggerNumber)
  VARMEX_U32_ATTRIBUTE(starTriggerLine, StarTriggerLine)
  VARMEX_TEXT_ATTRIBUTE(starTriggerLineName, StarTriggerLineName)
  VARMEX_TEXT_ATTRIBUTE(starTriggerControllerName, StarTriggerControllerName)
  VARMEX_U32_ATTRIBUTE(dstarTriggerNumber, DStarTriggerNumber)
  VARMEX_U32_ATTRIBUTE(dstarTriggerSet, DStarTriggerSet)
  VARMEX_TEXT_ATTRIBUTE(dstarTriggerSetName, DStarTriggerSetName)
  VARMEX_TEXT_ATTRIBUTE(dstarTriggerControllerName, DStarTriggerControllerName)

  inline Chassis chassis() const;
  List<Device> devices() const { return list<Device>(varmex_container_Devices); }
};

// One chassis.
class Chassis : public ItemBase {
 public:
  Chassis(varmex_Item* handle, detail::SessionHandle session)
      : ItemBase(handle, std::move(session)) {}

  VARMEX_U32_ATTRIBUTE(number, ChassisNumber)
  VARMEX_TEXT_ATTRIBUTE(vendor, ChassisVendor)
  VARMEX_TEXT_ATTRIBUTE(model, ChassisModel)
  VARMEX_TEXT_ATTRIBUTE(serialNumber, ChassisSerialNumber)
  VARMEX_TEXT_ATTRIBUTE(identity, ChassisIdentity)
  VARMEX_TEXT_ATTRIBUTE(descriptionFile, ChassisDescriptionFile)
  VARMEX_TEXT_ATTRIBUTE(triggerBusList, ChassisTriggerBusList)
  VARMEX_TEXT_ATTRIBUTE(triggerManager, ChassisTriggerManagerIdentifier)
  VARMEX_TEXT_ATTRIBUTE(triggerManagerLibrary, ChassisTriggerManagerLibrary)
  bool isTriggerManagerNative() const { return u32(varmex_u32_IsTriggerManagerNative) != 0; }

  Slot slot(std::uint32_t slotNumber) const {
    Status status;
    Slot item(varmex_openSlotByNumber(handle(), slotNumber, status), session());
    status.check();
    return item;
  }
  // The three lists of a chassis fail when any slot, bridge or device of it can't be opened.
  List<Slot> slots() const { return list<Slot>(varmex_container_Slots); }
  List<TriggerBridge> triggerBridges() const {
    return list<TriggerBridge>(varmex_container_TriggerBridges);
  }
  List<Device> devices() const { return list<Device>(varmex_container_Devices); }

  // The slots, each for itself: slots() unless that fails. Then the slots that have a section, up
  // to number 255 and whether they are listed or not, and the one at which slots() failed; so a
  // second slot that is listed and has no section is not among them. Who knows the numbers hands
  // them over: `numbers(failure)` answers which to open, and each of these is in the result.
  // Bridges can't be opened one by one.
  std::vector<Attempt<Slot>> eachSlot() const {
    return detail::openEachUpTo255<Slot>([this] { return slots(); }, "slotNum",
                                         [this](std::uint32_t n) { return slot(n); });
  }
  template <class Numbers>
  std::vector<Attempt<Slot>> eachSlot(Numbers numbers) const {
    return detail::openEach<Slot>([this] { return slots(); }, numbers,
                                  [this](std::uint32_t n) { return slot(n); });
  }

  // What sits in the slots, in their order. modules() fails as a whole with the first fault;
  // eachModule() goes on behind what can't be opened, by the numbers as eachSlot() does.
  inline std::vector<Module> modules() const;
  inline std::vector<ModuleAttempt> eachModule() const;
  template <class Numbers>
  std::vector<ModuleAttempt> eachModule(Numbers numbers) const;
};

inline Chassis TriggerBridge::chassis() const {
  return containing<Chassis>(varmex_itemType_Chassis);
}
inline Slot Device::slot() const { return containing<Slot>(varmex_itemType_Slot); }
inline Chassis Device::chassis() const { return containing<Chassis>(varmex_itemType_Chassis); }
inline Chassis Slot::chassis() const { return containing<Chassis>(varmex_itemType_Chassis); }

// A PCI address as the library has it, in decimal with dots: "13.0.0".
struct PciAddress {
  std::uint32_t bus = 0;
  std::uint32_t device = 0;
  std::uint32_t function = 0;

  std::string text() const {
    return std::to_string(bus) + '.' + std::to_string(device) + '.' + std::to_string(function);
  }
  bool operator==(const PciAddress& other) const {
    return bus == other.bus && device == other.device && function == other.function;
  }
  bool operator!=(const PciAddress& other) const { return !(*this == other); }
};

// What sits in a slot, its PCI functions as one thing; or the controller in a system slot, of which
// the description may name no function. Everything was read when the module was made, each once.
// What the description does not tell, or tells unreadably, is an empty text or no number; of a
// module that only pxisys.ini describes it tells functions and addresses alone.
struct Module {
  std::uint32_t chassisNumber;
  std::uint32_t slotNumber;          // the slot that it is anchored in
  std::vector<std::uint32_t> slots;  // all that it covers, the anchor first
  std::string name;                  // "PXI1Slot9"
  std::string alias;                 // the user's name for it
  std::string vendor;
  std::string model;
  std::string chassisSerialNumber;  // modules have none of their own
  std::string chassisIdentity;
  std::vector<std::string> resourceNames;
  std::vector<PciAddress> addresses;  // one for each function, in ascending order
  std::vector<Device> functions;
  std::optional<std::uint32_t> linkWidth;      // lanes as the link runs
  std::optional<std::uint32_t> linkWidthMax;   // that the module can use
  std::optional<std::uint32_t> slotLinkWidth;  // that its slot has
  bool hasSlotLink;  // whether slots of that type have a link width; those of controllers have none

  // "1/9": chassis and slot.
  std::string place() const {
    return std::to_string(chassisNumber) + '/' + std::to_string(slotNumber);
  }

  // Vendor and model, or the name where the description knows neither.
  std::string title() const {
    if (vendor.empty() && model.empty()) return name;
    return vendor + (vendor.empty() || model.empty() ? "" : " ") + model;
  }

  // The most lanes that both module and slot can; nothing where one of the two is not known.
  std::optional<std::uint32_t> possibleLinkWidth() const {
    if (!hasSlotLink) return linkWidthMax;
    if (!linkWidthMax || !slotLinkWidth) return std::nullopt;
    return *linkWidthMax < *slotLinkWidth ? linkWidthMax : slotLinkWidth;
  }
  bool isLinkReduced() const {
    const auto possible = possibleLinkWidth();
    return linkWidth && possible && *linkWidth < *possible;
  }

  // Whether it goes by that name: its alias, name, place, one of its resource names or PCI
  // addresses ("13.0.0"). The case of letters does not matter.
  bool isCalled(const std::string& text) const;
};

// One of a list of modules that goes on behind what can't be opened: the module, or why there is
// none; without a slot number where the whole chassis can't be opened.
struct ModuleAttempt {
  std::uint32_t chassisNumber = 0;
  std::optional<std::uint32_t> slotNumber;
  std::optional<Module> module;
  std::optional<Error> error;
};

namespace detail {

inline bool isSameName(const std::string& a, const std::string& b) {
  const auto lower = [](char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
  };
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [&](char x, char y) { return lower(x) == lower(y); });
}

// The parts of AddressInfo: between semicolons and plus signs.
inline std::vector<std::string> splitResourceNames(const std::string& text) {
  std::vector<std::string> names;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of(";+", at), text.size());
    if (end > at) names.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return names;
}

// What the description tells of a module is in its slot: every function answers the same.
inline void readModule(const Device& function, Module& module) {
  module.alias = function.instanceNameIfAny().value_or("");
  module.vendor = function.vendorIfAny().value_or("");
  module.model = function.modelIfAny().value_or("");
  module.resourceNames = splitResourceNames(function.addressInfoIfAny().value_or(""));
  module.linkWidth = function.linkWidthNegotiatedIfAny();
  module.linkWidthMax = function.linkWidthMaxIfAny();
}

inline void readController(const Slot& slot, Module& module) {
  module.alias = slot.systemInstanceNameIfAny().value_or("");
  module.vendor = slot.systemVendorIfAny().value_or("");
  module.model = slot.systemModelIfAny().value_or("");
  module.resourceNames = splitResourceNames(slot.systemAddressInfoIfAny().value_or(""));
}

// The modules of a chassis, collected from its slots.
class ModuleReader {
 public:
  explicit ModuleReader(const Chassis& chassis)
      : number_(chassis.number()),
        serialNumber_(chassis.serialNumberIfAny().value_or("")),
        identity_(chassis.identity()) {}

  std::vector<ModuleAttempt> run(const std::vector<Attempt<Slot>>& slots) {
    for (const Attempt<Slot>& slot : slots) add(slot);
    // Slots without a function belong to the modules that cover them.
    for (const auto& [slot, anchor] : covered_) {
      for (ModuleAttempt& attempt : attempts_) {
        std::optional<Module>& module = attempt.module;
        if (module && module->slotNumber == anchor) module->slots.push_back(slot);
      }
    }
    return std::move(attempts_);
  }

 private:
  void add(const Attempt<Slot>& slot) {
    if (slot.error) return addError(slot.number, *slot.error);
    try {
      read(slot.number, *slot.item);
    } catch (const Error& error) {
      addError(slot.number, error);
    }
  }

  void addError(std::uint32_t slot, const Error& error) {
    attempts_.push_back({number_, slot, std::nullopt, error});
  }

  void read(std::uint32_t number, const Slot& slot) {
    Module module{};
    for (Device device : slot.devices()) module.functions.push_back(std::move(device));
    for (const Device& device : module.functions) {
      module.addresses.push_back({device.bus(), device.number(), device.function()});
    }
    if (module.functions.empty()) {
      readController(slot, module);
    } else if (module.functions.front().isExpress()) {  // all come from one file
      readModule(module.functions.front(), module);
    }
    const bool isThere = !module.functions.empty() || !module.alias.empty() ||
                         !module.vendor.empty() || !module.model.empty();
    if (!isThere) return addCovered(number, slot);
    module.chassisNumber = number_;
    module.slotNumber = number;
    module.slots = {number};
    module.name = "PXI" + std::to_string(number_) + "Slot" + std::to_string(number);
    module.chassisSerialNumber = serialNumber_;
    module.chassisIdentity = identity_;
    module.slotLinkWidth = slot.linkWidth1IfAny();
    // Of a slot whose type can't be read nobody knows.
    constexpr std::uint32_t kWithLink = varmex_slotType_PXIePeripheral;
    module.hasSlotLink = (slot.typeIfAny().value_or(kWithLink) & kWithLink) != 0;
    attempts_.push_back({number_, number, std::move(module), std::nullopt});
  }

  void addCovered(std::uint32_t number, const Slot& slot) {
    const auto anchor = slot.occupyingModuleSlotIfAny();
    if (anchor && *anchor != number) covered_.emplace_back(number, *anchor);
  }

  std::uint32_t number_;
  std::string serialNumber_;
  std::string identity_;
  std::vector<ModuleAttempt> attempts_;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> covered_;  // and the slot of the module
};

inline std::vector<Module> modulesOf(std::vector<ModuleAttempt> attempts) {
  std::vector<Module> modules;
  for (ModuleAttempt& attempt : attempts) {
    if (attempt.error) throw *attempt.error;
    modules.push_back(std::move(*attempt.module));
  }
  return modules;
}

}  // namespace detail

inline std::vector<Module> Chassis::modules() const { return detail::modulesOf(eachModule()); }
inline std::vector<ModuleAttempt> Chassis::eachModule() const {
  return detail::ModuleReader(*this).run(eachSlot());
}
template <class Numbers>
std::vector<ModuleAttempt> Chassis::eachModule(Numbers numbers) const {
  return detail::ModuleReader(*this).run(eachSlot(numbers));
}

inline bool Module::isCalled(const std::string& text) const {
  for (const std::string& own : {alias, name, place()}) {
    if (!text.empty() && detail::isSameName(own, text)) return true;
  }
  for (const std::string& own : resourceNames) {
    if (detail::isSameName(own, text)) return true;
  }
  for (const PciAddress& own : addresses) {
    if (own.text() == text) return true;
  }
  return false;
}

enum class WaitResult : std::uint32_t {
  changed = varmex_waitChanged,
  timedOut = varmex_waitTimedOut,
  cancelled = varmex_waitCancelled
};

// A snapshot of the system description.
class Session : public ItemBase {
 public:
  // Reads the description as it stands.
  Session() : Session(0) {}

  // Has the PXI service library bring the description up to date first. Its failure is no failure
  // of this, and shows in warning().
  static Session synchronized() { return Session(1); }
  const std::optional<Error>& warning() const { return warning_; }

  VARMEX_TEXT_ATTRIBUTE(version, Version)
  VARMEX_TEXT_ATTRIBUTE(pxiSysPath, PxiSysPath)
  VARMEX_TEXT_ATTRIBUTE(pxieSysPath, PxieSysPath)
  VARMEX_TEXT_ATTRIBUTE(configurationPath, ConfigurationPath)
  bool isCurrent() const { return u32(varmex_u32_SessionIsCurrent) != 0; }

  Chassis chassis(std::uint32_t chassisNumber) const {
    Status status;
    Chassis item(varmex_openChassisByNumber(handle(), chassisNumber, status), session());
    status.check();
    return item;
  }
  Device device(std::uint32_t bus, std::uint32_t number, std::uint32_t function) const {
    Status status;
    const tDeviceAddress address = {0, bus, number, function};
    Device item(varmex_openDeviceByAddr(handle(), &address, status), session());
    status.check();
    return item;
  }
  // The four lists of a session fail when any chassis can't be opened, and when any slot, bridge or
  // device of any chassis can't.
  List<Chassis> chassis() const { return list<Chassis>(varmex_container_Chassis); }
  List<Slot> slots() const { return list<Slot>(varmex_container_Slots); }
  List<TriggerBridge> triggerBridges() const {
    return list<TriggerBridge>(varmex_container_TriggerBridges);
  }
  List<Device> devices() const { return list<Device>(varmex_container_Devices); }

  // The chassis, each for itself: chassis() unless that fails. Then the chassis that have a
  // section, up to number 255 and whether they are listed or not; or those of the numbers that
  // `numbers(failure)` answers, each of which is in the result.
  std::vector<Attempt<Chassis>> eachChassis() const {
    return detail::openEachUpTo255<Chassis>([this] { return chassis(); }, "chassisNumber",
                                            [this](std::uint32_t n) { return chassis(n); });
  }
  template <class Numbers>
  std::vector<Attempt<Chassis>> eachChassis(Numbers numbers) const {
    return detail::openEach<Chassis>([this] { return chassis(); }, numbers,
                                     [this](std::uint32_t n) { return chassis(n); });
  }

  // What sits in the slots of all chassis, in their order. modules() fails as a whole with the
  // first fault; eachModule() goes on behind what can't be opened, as eachChassis() does.
  std::vector<Module> modules() const { return detail::modulesOf(eachModule()); }
  std::vector<ModuleAttempt> eachModule() const {
    std::vector<ModuleAttempt> attempts;
    for (const Attempt<Chassis>& chassis : eachChassis()) {
      if (chassis.error) {
        attempts.push_back({chassis.number, std::nullopt, std::nullopt, chassis.error});
        continue;
      }
      for (ModuleAttempt& attempt : chassis.item->eachModule()) {
        attempts.push_back(std::move(attempt));
      }
    }
    return attempts;
  }

  // The first module that goes by that name (Module::isCalled); one whose alias it is goes ahead of
  // all others. Nothing where none does; what can't be opened hides no other module, and its
  // failure is thrown where none goes by the name.
  std::optional<Module> findModule(const std::string& name) const {
    std::optional<Module> found;
    std::optional<Error> failure;
    for (ModuleAttempt& attempt : eachModule()) {
      if (attempt.error) {
        if (!failure) failure = std::move(attempt.error);
      } else if (attempt.module->isCalled(name)) {
        if (detail::isSameName(attempt.module->alias, name)) return std::move(attempt.module);
        if (!found) found = std::move(attempt.module);
      }
    }
    if (!found && failure) throw *failure;
    return found;
  }

  // Blocks until the description changed or the time ran out; without an argument, without limit.
  WaitResult wait(std::chrono::milliseconds timeout) const {
    constexpr std::int64_t longest = 0xFFFFFFFE;
    const std::int64_t count = timeout.count();
    return waitFor(static_cast<std::uint32_t>(count < 0 ? 0 : count > longest ? longest : count));
  }
  WaitResult wait() const { return waitFor(0xFFFFFFFF); }

  // Ends all waits on the session, now and later.
  void cancelWaits() const { varmex_cancelWaitForInvalidation(handle()); }

 private:
  explicit Session(std::uint32_t flags) : Session(flags, Status()) {}
  Session(std::uint32_t flags, Status&& status)
      : ItemBase(varmex_openPXISession(flags, status), nullptr) {
    status.check();
    if (status.code() != 0) warning_.emplace(status.error());
  }

  WaitResult waitFor(std::uint32_t milliseconds) const {
    const detail::SessionHandle kept = session();
    Status status;
    const varmex_WaitResult result =
        varmex_waitForSessionInvalidation(kept.get(), milliseconds, status);
    status.check();
    return static_cast<WaitResult>(result);
  }

  std::optional<Error> warning_;
};

#undef VARMEX_U32_ATTRIBUTE
#undef VARMEX_TEXT_ATTRIBUTE

// A terminal of a routing device, as the adaptor tells of it.
struct Terminal {
  std::string name;
  std::string visibility;
  std::string busType;
  std::string busName;
  std::string canonicalName;
  std::uint32_t busLine = 0;
  bool isExternal = false;
  bool isOwned = false;
  bool isAlias = false;
  bool isMaskedOut = false;
};

// Where a route may begin, and the token that it would hold its terminal under.
struct Seed {
  std::string terminal;
  std::string token;
  std::uint32_t cost = 0;
};

// A route of one's own session that holds a terminal already.
struct Conflict {
  std::uint64_t sessionId = 0;
  std::uint32_t ticket = 0;
};

// A calculated route; it is destroyed, and its reservation with it, at its end.
class Route {
 public:
  Route(Route&& other) noexcept
      : session_(std::move(other.session_)),
        ticket_(other.ticket_),
        destination_(std::move(other.destination_)) {}
  Route& operator=(Route&& other) noexcept {
    std::swap(session_, other.session_);
    std::swap(ticket_, other.ticket_);
    std::swap(destination_, other.destination_);
    return *this;
  }
  ~Route() {
    if (session_) telmar_ra_varmex_destroyRoute(session_.get(), ticket_);
  }

  std::uint32_t ticket() const { return ticket_; }
  const std::string& destination() const { return destination_; }

  // Takes the terminal; Error with telmar_ra_errorResourcesInUse when another token holds it, and
  // then the routes of this session that do so are added to `conflicts`.
  void reserve(std::vector<Conflict>* conflicts = nullptr) const {
    detail::Reply reply;
    Status status;
    telmar_ra_varmex_reserveRoute(session_.get(), ticket_, &reply.text, status);
    if (conflicts && reply.text) addConflicts(reply.text, *conflicts);
    status.check();
  }
  void program() const {
    Status status;
    telmar_ra_varmex_programRoute(session_.get(), ticket_, status);
    status.check();
  }
  void unprogram() const { telmar_ra_varmex_unprogramRoute(session_.get(), ticket_); }
  void unreserve() const { telmar_ra_varmex_unreserveRoute(session_.get(), ticket_); }

 private:
  friend class RoutingSession;
  Route(std::shared_ptr<telmar_ra_Session> session, std::uint32_t ticket)
      : session_(std::move(session)), ticket_(ticket) {}

  static void addConflicts(const std::string& json, std::vector<Conflict>& conflicts) {
    for (const detail::JsonPair& pair : detail::flattenJson(json)) {
      const unsigned long long number = std::strtoull(pair.value.c_str(), nullptr, 10);
      if (pair.key == "sessionId") {
        conflicts.push_back({number, 0});
      } else if (pair.key == "ticket" && !conflicts.empty()) {
        conflicts.back().ticket = static_cast<std::uint32_t>(number);
      }
    }
  }

  std::shared_ptr<telmar_ra_Session> session_;
  std::uint32_t ticket_;
  std::string destination_;
};

// A client's session on the trigger lines of one module.
class RoutingSession {
 public:
  // The groups of lines that a session may be on.
  enum Lines : std::uint32_t { triggerBus = 1, star = 2, dstar = 4 };
  friend Lines operator|(Lines a, Lines b) {
    return static_cast<Lines>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
  }

  // Fails for lines that the module's slot does not have.
  RoutingSession(std::uint32_t bus, std::uint32_t device, std::uint32_t function, Lines lines)
      : RoutingSession(std::to_string(bus) + '.' + std::to_string(device) + '.' +
                       std::to_string(function) + ':' + std::to_string(lines)) {}
  explicit RoutingSession(const std::string& deviceName) {
    Status status;
    session_.reset(telmar_ra_varmex_createSession(deviceName.c_str(), std::realloc, status),
                   detail::Closer());
    status.check();
  }

  std::vector<Terminal> terminals() const {
    Status status;
    const std::unique_ptr<telmar_ra_TerminalIterator, detail::Closer> at(
        telmar_ra_varmex_getAllTerminals(session_.get(), status));
    status.check();
    std::vector<Terminal> list;
    for (; !telmar_ra_varmex_TerminalIterator_isEnd(at.get());
         telmar_ra_varmex_TerminalIterator_next(at.get(), status)) {
      list.push_back(terminalAt(at.get()));
    }
    return list;
  }

  // One route for each wanted terminal that a seed stands on and nobody else holds.
  std::vector<Route> calculateRoutes(const std::vector<Seed>& seeds,
                                     const std::vector<std::string>& destinations) const {
    detail::Reply reply;
    Status status;
    telmar_ra_varmex_calculateRoute(session_.get(), seedsJson(seeds).c_str(),
                                    namesJson(destinations).c_str(), nullptr, &reply.text, status);
    status.check();
    return readRoutes(reply.text ? reply.text : "");
  }

 private:
  static std::string seedsJson(const std::vector<Seed>& seeds) {
    std::string json;
    for (const Seed& seed : seeds) {
      json += (json.empty() ? "[" : ",");
      json += "{\"terminal\":" + detail::quoteJson(seed.terminal) +
              ",\"cost\":" + std::to_string(seed.cost) + ",\"constraints\":{}" +
              ",\"srcDeviceToken\":" + detail::quoteJson(seed.token) + "}";
    }
    return json.empty() ? "[]" : json + "]";
  }
  static std::string namesJson(const std::vector<std::string>& names) {
    std::string json;
    for (const std::string& name : names) {
      json += (json.empty() ? "[" : ",") + detail::quoteJson(name);
    }
    return json.empty() ? "[]" : json + "]";
  }

  std::vector<Route> readRoutes(const std::string& json) const {
    std::vector<Route> routes;
    for (detail::JsonPair& pair : detail::flattenJson(json)) {
      if (pair.key == "ticket") {
        const auto ticket = std::strtoul(pair.value.c_str(), nullptr, 10);
        routes.push_back(Route(session_, static_cast<std::uint32_t>(ticket)));
      } else if (pair.key == "destination" && !routes.empty()) {
        routes.back().destination_ = std::move(pair.value);
      }
    }
    return routes;
  }

  static Terminal terminalAt(telmar_ra_TerminalIterator* at) {
    Status status;
    const auto text = [&](const char* name) -> std::string {
      const char* const value =
          telmar_ra_varmex_TerminalIterator_getStringAttribute(at, name, status);
      return value ? value : "";
    };
    const auto flag = [&](const char* name) {
      return telmar_ra_varmex_TerminalIterator_getBoolAttribute(at, name, status);
    };
    Terminal terminal;
    terminal.name = text("name");
    terminal.visibility = text("visibility");
    terminal.busType = text("busType");
    terminal.busName = text("busName");
    terminal.canonicalName = text("canonicalName");
    terminal.busLine = telmar_ra_varmex_TerminalIterator_getU32Attribute(at, "busLine", status);
    terminal.isExternal = flag("isExternal");
    terminal.isOwned = flag("isOwned");
    terminal.isAlias = flag("isAlias");
    terminal.isMaskedOut = flag("isMaskedOut");
    status.check();
    return terminal;
  }

  std::shared_ptr<telmar_ra_Session> session_;
};

}  // namespace cpp1
}  // namespace varmex

#endif
