#include "tests/agreement/questions.h"

#include <functional>
#include <numeric>
#include <set>
#include <utility>

#include "tests/support/texts.h"
#include "tools/varmex/describe/attributes.h"

namespace agreement {

namespace {

using test::cut;
using varmex::Chassis;
using varmex::ItemBase;
using varmex::Session;

// Beyond all numbers that descriptions of this test hold.
constexpr std::uint32_t kLastChassis = 9;
constexpr std::uint32_t kLastSlot = 21;

bool isNoAnswer(std::int32_t) { return false; }
bool isUnknown(std::int32_t code) { return code == varmex_errorUnknownItem; }
bool isAbsence(std::int32_t code) {
  return varmex::meansNothing(code) && code != varmex_errorInformationNotAvailable;
}

using tIsAnswer = bool (*)(std::int32_t code);

void askAttribute(const ItemBase& item, const tool::tAttribute& attribute) {
  if (attribute.isText) {
    item.text(attribute.number);
  } else {
    item.u32(attribute.number);
  }
}

class tAsker {
 public:
  // Asks nothing but that question and those that must be answered ahead of it, if there is one,
  // and takes no failure for an answer then.
  explicit tAsker(const std::string& question = "") : slots_(kLastSlot + 1) {
    std::iota(slots_.begin(), slots_.end(), 0);
    if (question.empty()) return;
    const std::string about = cut(question, ", ").first;
    const auto [chassis, slot] = cut(cut(about, " ").second, "/");
    way_ = {"session", "chassis " + chassis, about, question};
    if (about.starts_with("bridge ")) way_.insert("chassis " + chassis + ", trigger bridges");
    if (question.starts_with(about + ", device, ")) way_.insert(about + ", devices");
    if (!slot.empty()) slots_ = {static_cast<std::uint32_t>(std::stoul(slot))};
  }

  std::vector<tRefusal> run() {
    ask("session", isNoAnswer, [&] {
      const Session session;
      for (std::uint32_t number = 0; number <= kLastChassis; ++number) {
        ask("chassis " + std::to_string(number), isUnknown,
            [&] { askChassis(session.chassis(number)); });
      }
      ask("all chassis", isNoAnswer, [&] { session.chassis(); });
      ask("all devices", isNoAnswer, [&] { session.devices(); });
    });
    return std::move(refusals_);
  }

 private:
  void ask(const std::string& question, tIsAnswer isAnswer, const std::function<void()>& answer) {
    if (!way_.empty() && !way_.contains(question)) return;
    try {
      answer();
    } catch (const varmex::Error& error) {
      if (way_.empty() && isAnswer(error.code())) return;
      refusals_.push_back({question, error.what()});
    } catch (const std::out_of_range& error) {
      refusals_.push_back(
          {question, std::string("the exception std::out_of_range: ") + error.what()});
    }
  }

  void askAttributes(const std::string& about, const ItemBase& item,
                     const tool::tAttributes& attributes) {
    for (const tool::tAttribute& attribute : attributes) {
      ask(about + ", " + attribute.name, isAbsence, [&] { askAttribute(item, attribute); });
    }
  }

  void askChassis(const Chassis& chassis) {
    const std::string number = std::to_string(chassis.number());
    askAttributes("chassis " + number, chassis, tool::kChassisAttributes);
    for (const std::uint32_t slot : slots_) {
      const std::string name = "slot " + number + '/' + std::to_string(slot);
      ask(name, isUnknown, [&] { askSlot(name, chassis.slot(slot)); });
    }
    ask("chassis " + number + ", slots", isNoAnswer, [&] { chassis.slots(); });
    ask("chassis " + number + ", trigger bridges", isNoAnswer, [&] {
      for (const varmex::TriggerBridge& bridge : chassis.triggerBridges()) {
        askAttributes("bridge " + number + '/' + std::to_string(bridge.number()), bridge,
                      tool::kBridgeAttributes);
      }
    });
  }

  void askSlot(const std::string& name, const varmex::Slot& slot) {
    askAttributes(name, slot, tool::kSlotAttributes);
    ask(name + ", devices", isNoAnswer, [&] {
      for (const varmex::Device& device : slot.devices())
        askAttributes(name + ", device", device, tool::kDeviceAttributes);
    });
  }

  std::set<std::string> way_;
  std::vector<std::uint32_t> slots_;
  std::vector<tRefusal> refusals_;
};

}  // namespace

std::vector<tRefusal> askEverything() { return tAsker().run(); }

std::string askAgain(const std::string& question) {
  const std::vector<tRefusal> refusals = tAsker(question).run();
  return refusals.empty() ? "" : refusals.front().words;
}

}  // namespace agreement
