#include "tools/varmex/check/library.h"

#include <iterator>

#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/files.h"

namespace tool {

namespace {

struct tRange {
  std::uint32_t first;
  std::uint32_t last;
};

constexpr tRange kNone{1, 0};
constexpr tRange kChassisTexts{varmex_str_ChassisVendor, varmex_str_ChassisTriggerBusList};
constexpr tRange kSlotNumbers{varmex_u32_SlotType, varmex_u32_OccupyingModuleSlot};
constexpr tRange kSlotTexts{varmex_str_PCISlotPath, varmex_str_LocalBusRight};
constexpr tRange kDeviceNumbers{varmex_u32_DeviceBus, varmex_u32_DeviceIsExpress};
constexpr tRange kDeviceTexts{varmex_str_DeviceInstanceName, varmex_str_DeviceName};
constexpr tRange kBridgeNumbers{varmex_u32_BridgeNumber, varmex_u32_BridgeLineMapping7};

// Codes for what an item plainly does not have.
bool meansAbsence(std::int32_t code) {
  return varmex::meansNothing(code) && code != varmex_errorInformationNotAvailable;
}

class tAsker {
 public:
  tAsker(tRules& rules, const tChassisPlan& chassis) : rules_(rules), chassis_(chassis) {}

  void run(const varmex::Session& session) {
    ask(aboutChassis(chassis_.number), [&] {
      const varmex::Chassis chassis = session.chassis(chassis_.number);
      askChassis(chassis);
      for (const auto& [number, namedBy] : chassis_.slots) {
        if (rules_.findings.isFull()) return;
        ask(aboutSlot(chassis_.number, number),
            [&, slot = number] { askSlot(chassis.slot(slot)); });
      }
      ask(aboutChassis(chassis_.number, "slots"), [&] { chassis.slots(); });
      ask(aboutChassis(chassis_.number, "trigger bridges"), [&] { askBridges(chassis); });
    });
  }

 private:
  template <class Ask>
  void ask(const tQuestion& question, Ask answer) {
    try {
      answer();
    } catch (const varmex::Error& error) {
      if (!meansAbsence(error.code())) take(question, answerOf(error));
    } catch (const std::out_of_range& error) {
      take(question, outOfRange());
    }
  }

  void askAll(const varmex::ItemBase& item, const tQuestion& about, tRange numbers, tRange texts) {
    const auto attribute = [&](const char* kind, std::uint32_t number) {
      return tQuestion{about.text + ", " + kind + " attribute " + std::to_string(number),
                       about.chassis};
    };
    for (std::uint32_t number = numbers.first; number <= numbers.last; ++number) {
      ask(attribute("number", number), [&] {
        varmex::Status status;
        varmex_getU32Attribute(item.handle(), number, status);
        if (!meansAbsence(status.code())) status.check();
      });
    }
    for (std::uint32_t number = texts.first; number <= texts.last; ++number) {
      ask(attribute("text", number), [&] {
        varmex::Status status;
        varmex_getStringAttribute(item.handle(), number, status);
        if (!meansAbsence(status.code())) status.check();
      });
    }
  }

  // Whether a trigger manager is native is a matter of the service library, but for one answer.
  void askChassis(const varmex::Chassis& chassis) {
    askAll(chassis, aboutChassis(chassis_.number), kNone, kChassisTexts);
    varmex::Status status;
    varmex_getU32Attribute(chassis.handle(), varmex_u32_IsTriggerManagerNative, status);
    if (status.code() != varmex_errorInformationConflict) return;
    take(aboutChassis(chassis_.number, "IsTriggerManagerNative"), answerOf(status.error()));
  }

  void askSlot(const varmex::Slot& slot) {
    section_ = chassis_.slotSection(slot.number());
    const tQuestion question = aboutSlot(chassis_.number, slot.number());
    askAll(slot, question, kSlotNumbers, kSlotTexts);
    for (const varmex::Device& device : slot.devices()) {
      askAll(device, {question.text + ", device", question.chassis}, kDeviceNumbers, kDeviceTexts);
    }
    section_.clear();
  }

  void askBridges(const varmex::Chassis& chassis) {
    for (const varmex::TriggerBridge& bridge : chassis.triggerBridges()) {
      askAll(bridge, aboutBridge(chassis_.number, bridge.number()), kBridgeNumbers, kNone);
    }
  }

  void take(const tQuestion& question, const tRefusedAnswer& refusal) {
    if (rules_.findings.explain(chassis_.number, refusal.words)) return;
    if (isOrdinary(refusal.words)) return;
    const std::string& section = section_.empty() ? chassis_.section : section_;
    const tCheckedFile* const file = rules_.firstWith(section);
    rules_.findings.addRefused("unexplained-failure", (file ? *file : rules_.classic).at(section),
                               "the library refuses something for a reason that the check does not "
                               "know",
                               question, refusal);
  }

  // Nothing that is there is at fault: something that may be absent is.
  bool isOrdinary(const std::string& refusal) const {
    for (const char* item : kOptionalItems) {
      const bool isItems = refusal.ends_with(item + std::string(" not found"));
      if (isItems && refusal == itemNotFound(section_, item).words) return true;
    }
    for (const char* item : {"TriggerManager", "TriggerBusList"}) {
      if (refusal == notAvailable({{"itemName", item}, {"sectionName_", chassis_.section}}).words) {
        return true;
      }
    }
    return refusal == notAvailable({{"message", "There is no device occupying this slot"}}).words ||
           refusal ==
               notAvailable({{"attribute", std::to_string(varmex_str_ChassisDescriptionFile)}})
                   .words;
  }

  tRules& rules_;
  const tChassisPlan& chassis_;
  std::string section_;  // of the slot that is being asked
};

// The item at fault, else the file. The rules have read the description, so that where the library
// names no file it is the one whose lock a session takes.
tPosition positionOf(const tRules& rules, const varmex::Error& failure) {
  if (const auto item = faultyItemOf(failure)) {
    const tCheckedFile* const file = rules.firstWith(item->section);
    if (file) return file->at(item->section, item->item);
  }
  for (const auto& [key, value] : varmex::detail::flattenJson(failure.json())) {
    if (key == "path") return {filePath(value).filename().string(), 0, "", ""};
  }
  return {"configuration.ini", 0, "", ""};
}

}  // namespace

void checkAnswers(tRules& rules, const tPlan& plan, const varmex::Session& session) {
  for (const auto& [number, chassis] : plan.chassis) tAsker(rules, chassis).run(session);
}

void checkFailure(tRules& rules, const varmex::Error& failure) {
  if (rules.findings.explain(std::nullopt, failure.what())) return;
  const tToldFailure told = toldFailure(failure);
  const tPosition position = positionOf(rules, failure);
  const bool isItems = !position.section.empty();
  rules.findings.addRefused(
      "session-fails", position,
      "the session does not open: " + told.sentence + (isItems ? "" : ' ' + told.remedy),
      aboutSession(), answerOf(failure));
}

}  // namespace tool
