// The PCI addresses of the modules: in pxisys.ini trees of functions, in pxiesys.ini resource
// names.

#include <initializer_list>

#include "ostrel/quarks/numbers.h"
#include "tools/varmex/check/rules.h"

namespace tool {

namespace {

constexpr const char* kBus = "PCIBusNumber";
constexpr const char* kDevice = "PCIDeviceNumber";
constexpr const char* kAddressInfo = "AddressInfo";

bool isBus(std::int32_t number) { return number >= 0 && number <= 255; }
bool isDevice(std::int32_t number) { return number >= 0 && number <= 31; }

// The numbers of a text, each behind one of these literals, as far as the text has them.
std::vector<std::int32_t> readNumbers(const std::string& text,
                                      std::initializer_list<std::string_view> literals) {
  std::vector<std::int32_t> numbers;
  const char* position = text.c_str();
  for (const std::string_view literal : literals) {
    if (std::string_view(position).substr(0, literal.size()) != literal) break;
    const varmex::tSignedText number = varmex::readSigned(position + literal.size());
    if (!number.end) break;
    numbers.push_back(number.value);
    position = number.end;
  }
  return numbers;
}

// A slot, and the file that says so.
struct tOwner {
  std::uint32_t chassis;
  std::uint32_t slot;
  const tCheckedFile* file;

  bool operator==(const tOwner&) const = default;
};

// Enters the devices in the order in which a session does when it opens.
class tDeviceCheck {
 public:
  tDeviceCheck(tRules& rules, const tPlan& plan) : rules_(rules), plan_(plan) {}

  void run() {
    for (const std::uint32_t number : plan_.classicOrder) {
      const tChassisPlan& chassis = plan_.chassis.at(number);
      for (const std::uint32_t slot : chassis.classicSlots) {
        if (slot != 1) enterFunctions(chassis, slot);
      }
    }
    for (const std::uint32_t number : plan_.expressOrder) {
      const tChassisPlan& chassis = plan_.chassis.at(number);
      for (const std::uint32_t slot : chassis.expressSlots) enterNames(chassis, slot);
    }
    for (const auto& [number, chassis] : plan_.chassis) {
      for (const auto& [slot, namedBy] : chassis.slots) checkUnentered(chassis, slot);
    }
  }

 private:
  using tKey = std::pair<std::int32_t, std::int32_t>;

  void enterFunctions(const tChassisPlan& chassis, std::uint32_t slot) {
    const std::string section = chassis.slotSection(slot);
    if (!rules_.classic.hasSection(section) || !entered_.insert(section).second) return;
    owner_ = {chassis.number, slot, &rules_.classic};
    question_ = aboutSession();
    checkFunctions(section);
  }

  void enterNames(const tChassisPlan& chassis, std::uint32_t slot) {
    const auto names = rules_.express.text(chassis.slotSection(slot), kAddressInfo);
    if (!names) return;
    owner_ = {chassis.number, slot, &rules_.express};
    const tPosition position = rules_.express.at(chassis.slotSection(slot), kAddressInfo);
    for (const auto& address : readResourceNames(*names).addresses) {
      enter({address.bus, address.device}, address.function, position, position);
    }
  }

  // What only the slot itself is asked for: where the session leaves it out, and what both files
  // say the same of.
  void checkUnentered(const tChassisPlan& chassis, std::uint32_t slot) {
    const std::string section = chassis.slotSection(slot);
    const auto names = rules_.express.text(section, kAddressInfo);
    for (const std::string& name :
         names ? readResourceNames(*names).unreadable : std::vector<std::string>()) {
      rules_.doubt("address-unreadable", rules_.express.at(section, kAddressInfo),
                   "no address of a device: \"" + name + '"', "as without this address");
    }
    if (!rules_.classic.hasSection(section) || !entered_.insert(section).second) return;
    owner_.reset();
    question_.reset();
    if (!names) question_ = aboutSlot(chassis.number, slot, "devices");
    checkFunctions(section);
  }

  // Each section once, however often it is named and however deep it lies.
  void checkFunctions(const std::string& slotSection) {
    const tCheckedFile& file = rules_.classic;
    if (!file.hasItem(slotSection, "FunctionList")) return checkFunction(slotSection, 0);
    std::vector<std::pair<std::string, const char*>> open = {{slotSection, "FunctionList"}};
    while (!open.empty() && !rules_.findings.isFull()) {
      const auto [parent, list] = open.back();
      open.pop_back();
      const bool toFunctions = std::string_view(list) == "FunctionList";
      const tPosition position = file.at(parent, list);
      for (const std::uint32_t number :
           rules_.takeList(file, parent, list, question_).value_or(tNumbers())) {
        const std::string child =
            parent + (toFunctions ? "Function" : "Device") + std::to_string(number);
        if (!rules_.used.insert(child).second) continue;
        if (!file.hasSection(child)) {
          missSection(child, position, toFunctions);
        } else if (!toFunctions) {
          open.emplace_back(child, "FunctionList");
        } else {
          checkFunction(child, number);
          if (file.hasItem(child, "DeviceList")) open.emplace_back(child, "DeviceList");
        }
      }
    }
  }

  void missSection(const std::string& section, const tPosition& position, bool isFunction) {
    const std::string message = "names [" + section + "], which is missing";
    if (isFunction) {
      rules_.doubt("missing-section", position, message, "as without the function");
    } else if (question_) {
      rules_.findings.addRefused("missing-section", position, message, *question_,
                                 itemNotFound(section, "FunctionList"));
    }
  }

  void checkFunction(const std::string& section, std::uint32_t function) {
    const tCheckedFile& file = rules_.classic;
    const auto bus = file.text(section, kBus);
    const auto device = file.text(section, kDevice);
    if (bus == "None" || device == "None" || (!bus && !device)) return;
    if (!bus || !device) {
      const char* const missing = bus ? kDevice : kBus;
      rules_.doubt("missing-item", file.at(section, missing), std::string(missing) + " is missing",
                   "as without an address");
      return;
    }
    const auto busNumber = rules_.takeNumber(file, section, kBus, question_);
    const auto deviceNumber = rules_.takeNumber(file, section, kDevice, question_);
    if (!busNumber || !deviceNumber || !owner_) return;
    const char* const unreal = !isBus(*busNumber) ? kBus : !isDevice(*deviceNumber) ? kDevice : "";
    enter({*busNumber, *deviceNumber}, static_cast<std::int32_t>(function), file.at(section, kBus),
          file.at(section, unreal));
  }

  // At `unreal` stands what is out of range, if anything is.
  void enter(const tKey& key, std::int32_t function, const tPosition& position,
             const tPosition& unreal) {
    const auto [bus, device] = key;
    const std::string address =
        std::to_string(bus) + '.' + std::to_string(device) + '.' + std::to_string(function);
    if (!isBus(bus) || !isDevice(device) || function < 0 || function > 7) {
      rules_.doubt("address-out-of-range", unreal, "no PCI address has these numbers: " + address,
                   "a device at that address");
    }
    const auto [place, isNew] = owners_.try_emplace(key, *owner_);
    const tOwner& existing = place->second;
    if (isNew || existing == *owner_) return;
    rules_.findings.addRefused(
        "duplicate-address", position,
        "slot " + std::to_string(existing.chassis) + '/' + std::to_string(existing.slot) + " in " +
            existing.file->name() + " has the bus and device of " + address + " already",
        aboutSession(),
        conflict(
            {{"existingChassis", std::to_string(existing.chassis)},
             {"existingSlot", std::to_string(existing.slot)},
             {"chassis", std::to_string(owner_->chassis)},
             {"slot", std::to_string(owner_->slot)},
             {"bus", std::to_string(bus)},
             {"dev", std::to_string(device)},
             {"description", "Conflicting chassis/slot information was found  for a device"}}));
  }

  tRules& rules_;
  const tPlan& plan_;
  std::map<tKey, tOwner> owners_;
  std::set<std::string> entered_;
  // Of the slot that is being looked at: who claims its addresses, if anybody, and what fails.
  std::optional<tOwner> owner_;
  std::optional<tQuestion> question_;
};

}  // namespace

tResourceNames readResourceNames(const std::string& text) {
  tResourceNames names;
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find_first_of(";+", begin), text.size());
    const std::string name = text.substr(begin, end - begin);
    begin = end + 1;
    if (name.empty()) continue;
    auto numbers = readNumbers(name, {"PXI", "::", "-", "."});
    if (numbers.size() == 4) {
      numbers.erase(numbers.begin());
    } else {
      // In the older form the bus takes the place of the interface.
      numbers = readNumbers(name, {"PXI", "::", "::"});
    }
    if (name.ends_with("::INSTR") && numbers.size() == 3) {
      names.addresses.push_back({numbers[0], numbers[1], numbers[2]});
    } else {
      names.unreadable.push_back(name);
    }
  }
  return names;
}

void checkDevices(tRules& rules, const tPlan& plan) { tDeviceCheck(rules, plan).run(); }

}  // namespace tool
