#include "tests/agreement/questions.h"

#include <functional>
#include <sstream>
#include <utility>

#include "tools/varmex/describe/attributes.h"

namespace agreement {

namespace {

using varmex::Chassis;
using varmex::ItemBase;
using varmex::Session;

// Beyond all numbers that descriptions of this test hold.
constexpr std::uint32_t kLastChassis = 9;
constexpr std::uint32_t kLastSlot = 21;

bool isNeverAnAnswer(std::int32_t) { return false; }
bool isUnknown(std::int32_t code) { return code == varmex_errorUnknownItem; }
bool isAbsence(std::int32_t code) {
  return varmex::meansNothing(code) && code != varmex_errorInformationNotAvailable;
}

// Empty also for a failure that is an answer.
using tIsAnswer = bool (*)(std::int32_t code);
std::string wordsOf(const std::function<void()>& ask, tIsAnswer isAnswer = isNeverAnAnswer) {
  try {
    ask();
    return {};
  } catch (const varmex::Error& error) {
    return isAnswer(error.code()) ? "" : error.what();
  } catch (const std::out_of_range& error) {
    return std::string("the exception std::out_of_range: ") + error.what();
  }
}

void askAttribute(const ItemBase& item, const tool::tAttribute& attribute) {
  if (attribute.isText) {
    item.text(attribute.number);
  } else {
    item.u32(attribute.number);
  }
}

class tAsker {
 public:
  std::vector<tRefusal> run() {
    ask("session", [&] {
      const Session session;
      for (std::uint32_t number = 0; number <= kLastChassis; ++number) {
        ask(
            "chassis " + std::to_string(number), [&] { askChassis(session.chassis(number)); },
            isUnknown);
      }
      ask("all chassis", [&] { session.chassis(); });
      ask("all devices", [&] { session.devices(); });
    });
    return std::move(refusals_);
  }

 private:
  void ask(const std::string& question, const std::function<void()>& answer,
           tIsAnswer isAnswer = isNeverAnAnswer) {
    const std::string words = wordsOf(answer, isAnswer);
    if (!words.empty()) refusals_.push_back({question, words});
  }

  void askAttributes(const std::string& about, const ItemBase& item,
                     const tool::tAttributes& attributes) {
    for (const tool::tAttribute& attribute : attributes) {
      ask(
          about + ", " + attribute.name, [&] { askAttribute(item, attribute); }, isAbsence);
    }
  }

  void askChassis(const Chassis& chassis) {
    const std::string number = std::to_string(chassis.number());
    askAttributes("chassis " + number, chassis, tool::kChassisAttributes);
    for (std::uint32_t slot = 0; slot <= kLastSlot; ++slot) {
      const std::string name = "slot " + number + '/' + std::to_string(slot);
      ask(
          name, [&] { askSlot(name, chassis.slot(slot)); }, isUnknown);
    }
    ask("chassis " + number + ", slots", [&] { chassis.slots(); });
    ask("chassis " + number + ", trigger bridges", [&] {
      for (const varmex::TriggerBridge& bridge : chassis.triggerBridges()) {
        askAttributes("bridge " + number + '/' + std::to_string(bridge.number()), bridge,
                      tool::kBridgeAttributes);
      }
    });
  }

  void askSlot(const std::string& name, const varmex::Slot& slot) {
    askAttributes(name, slot, tool::kSlotAttributes);
    ask(name + ", devices", [&] {
      for (const varmex::Device& device : slot.devices())
        askAttributes(name + ", device", device, tool::kDeviceAttributes);
    });
  }

  std::vector<tRefusal> refusals_;
};

void askAttribute(const ItemBase& item, const std::string& name) {
  for (const tool::tAttributes* const kind : {&tool::kChassisAttributes, &tool::kSlotAttributes,
                                              &tool::kDeviceAttributes, &tool::kBridgeAttributes}) {
    for (const tool::tAttribute& attribute : *kind) {
      if (attribute.name == name) return askAttribute(item, attribute);
    }
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
