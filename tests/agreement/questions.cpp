#include "tests/agreement/questions.h"

#include <functional>
#include <map>
#include <sstream>
#include <utility>

namespace agreement {

namespace {

using varmex::Chassis;
using varmex::ItemBase;
using varmex::Session;

// Beyond all numbers that descriptions of this test hold.
constexpr std::uint32_t kLastChassis = 9;
constexpr std::uint32_t kLastSlot = 21;

// Where the attribute numbers of each kind of item begin and end.
using tRanges = std::vector<std::pair<std::uint32_t, std::uint32_t>>;
const tRanges kChassisRanges = {{4096, 4104}};
const tRanges kSlotRanges = {{4096, 4096}, {8192, 8206}};
const tRanges kDeviceRanges = {{4096, 4097}, {12288, 12294}};
const tRanges kBridgeRanges = {{4096, 4096}, {16384, 16395}};

std::string wordsOf(const std::function<void()>& ask) {
  try {
    ask();
    return {};
  } catch (const varmex::Error& error) {
    return error.what();
  } catch (const std::out_of_range& error) {
    return std::string("the exception std::out_of_range: ") + error.what();
  }
}

bool isAbsence(std::int32_t code) {
  return varmex::meansNothing(code) && code != varmex_errorInformationNotAvailable;
}

class tAsker {
 public:
  std::vector<tRefusal> run() {
    ask("session", [&] {
      const Session session;
      for (std::uint32_t number = 0; number <= kLastChassis; ++number) {
        askIfThere("chassis " + std::to_string(number),
                   [&] { askChassis(session.chassis(number)); });
      }
      ask("all chassis", [&] { session.chassis(); });
      ask("all devices", [&] { session.devices(); });
    });
    return std::move(refusals_);
  }

 private:
  void ask(const std::string& question, const std::function<void()>& answer) {
    const std::string words = wordsOf(answer);
    if (!words.empty()) refusals_.push_back({question, words});
  }

  void askIfThere(const std::string& question, const std::function<void()>& answer) {
    ask(question, [&] {
      try {
        answer();
      } catch (const varmex::Error& error) {
        if (error.code() != varmex_errorUnknownItem) throw;
      }
    });
  }

  void askAttributes(const std::string& about, const ItemBase& item, const tRanges& ranges) {
    for (const auto& [first, last] : ranges) {
      for (std::uint32_t number = first; number <= last; ++number) {
        const std::string name = about + ", attribute " + std::to_string(number);
        ask(name, [&] {
          varmex::Status status;
          varmex_getU32Attribute(item.handle(), number, status);
          if (!isAbsence(status.code())) status.check();
        });
        ask(name, [&] {
          varmex::Status status;
          varmex_getStringAttribute(item.handle(), number, status);
          if (!isAbsence(status.code())) status.check();
        });
      }
    }
  }

  void askChassis(const Chassis& chassis) {
    const std::string number = std::to_string(chassis.number());
    askAttributes("chassis " + number, chassis, kChassisRanges);
    for (std::uint32_t slot = 0; slot <= kLastSlot; ++slot) {
      const std::string name = "slot " + number + '/' + std::to_string(slot);
      askIfThere(name, [&] { askSlot(name, chassis.slot(slot)); });
    }
    ask("chassis " + number + ", slots", [&] { chassis.slots(); });
    ask("chassis " + number + ", trigger bridges", [&] {
      for (const varmex::TriggerBridge& bridge : chassis.triggerBridges()) {
        askAttributes("bridge " + number + '/' + std::to_string(bridge.number()), bridge,
                      kBridgeRanges);
      }
    });
  }

  void askSlot(const std::string& name, const varmex::Slot& slot) {
    askAttributes(name, slot, kSlotRanges);
    ask(name + ", devices", [&] {
      for (const varmex::Device& device : slot.devices())
        askAttributes(name + ", device", device, kDeviceRanges);
    });
  }

  std::vector<tRefusal> refusals_;
};

const std::map<std::string, std::uint32_t> kNumbers = {
    {"SlotType", varmex_u32_SlotType},
    {"PeripheralSlotLinkWidth1", varmex_u32_PeripheralSlotLinkWidth1},
    {"PeripheralSlotLinkWidth2", varmex_u32_PeripheralSlotLinkWidth2},
    {"SystemSlotLinkOrigin1", varmex_u32_SystemSlotLinkOrigin1},
    {"SystemSlotLinkOrigin2", varmex_u32_SystemSlotLinkOrigin2},
    {"PCISlotPathRootBus", varmex_u32_PCISlotPathRootBus},
    {"OccupyingModuleSlot", varmex_u32_OccupyingModuleSlot},
    {"TriggerBusNumber", varmex_u32_TriggerBusNumber},
    {"StarTriggerNumber", varmex_u32_StarTriggerNumber},
    {"DStarTriggerNumber", varmex_u32_DStarTriggerNumber},
    {"PeripheralModuleLinkWidthMax", varmex_u32_PeripheralModuleLinkWidthMax},
    {"PeripheralModuleLinkWidthNegotiated", varmex_u32_PeripheralModuleLinkWidthNegotiated},
    {"BridgeSourceTriggerBus", varmex_u32_BridgeSourceTriggerBus},
    {"BridgeDestinationTriggerBus", varmex_u32_BridgeDestinationTriggerBus},
};

const std::map<std::string, std::uint32_t> kTexts = {
    {"ChassisTriggerManagerIdentifier", varmex_str_ChassisTriggerManagerIdentifier},
    {"ChassisTriggerManagerLibrary", varmex_str_ChassisTriggerManagerLibrary},
    {"ChassisDescriptionFile", varmex_str_ChassisDescriptionFile},
    {"ChassisTriggerBusList", varmex_str_ChassisTriggerBusList},
};

void askAttribute(const ItemBase& item, const std::string& name) {
  constexpr const char* kLine = "BridgeLineMapping";
  if (name.empty()) return;
  if (const auto text = kTexts.find(name); text != kTexts.end()) {
    item.text(text->second);
  } else if (name.starts_with(kLine)) {
    item.u32(varmex_u32_BridgeLineMapping0 + static_cast<std::uint32_t>(name.back() - '0'));
  } else {
    item.u32(kNumbers.at(name));
  }
}

// "KIND NUMBER[/NUMBER][, REST]"
void askOnce(const std::string& question) {
  const Session session;
  if (question == "session") return;
  const std::size_t comma = question.find(", ");
  const std::string rest = comma == std::string::npos ? "" : question.substr(comma + 2);
  std::istringstream stream(question);
  std::string kind;
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  stream >> kind >> first;
  stream.ignore(1);
  stream >> second;
  const Chassis chassis = session.chassis(first);
  if (kind == "chassis" && rest == "slots") {
    chassis.slots();
  } else if (kind == "chassis" && rest == "trigger bridges") {
    chassis.triggerBridges();
  } else if (kind == "chassis") {
    askAttribute(chassis, rest);
  } else if (kind == "bridge") {
    for (const varmex::TriggerBridge& bridge : chassis.triggerBridges()) {
      if (bridge.number() == second) askAttribute(bridge, rest);
    }
  } else if (rest == "devices") {
    chassis.slot(second).devices();
  } else if (rest.starts_with("device, ")) {
    for (const varmex::Device& device : chassis.slot(second).devices()) {
      askAttribute(device, rest.substr(rest.find(", ") + 2));
    }
  } else {
    askAttribute(chassis.slot(second), rest);
  }
}

}  // namespace

std::vector<tRefusal> askEverything() { return tAsker().run(); }

std::string askAgain(const std::string& question) {
  return wordsOf([&] { askOnce(question); });
}

}  // namespace agreement
