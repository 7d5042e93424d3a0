// What there is: the lists of chassis and slots, and the sections that have their names.

#include <charconv>

#include "tools/varmex/check/rules.h"

namespace tool {

namespace {

// Takes a word and a number in plain decimal off the front of a section's name.
std::optional<std::uint32_t> takeNumbered(std::string_view& name, std::string_view word) {
  if (!name.starts_with(word)) return std::nullopt;
  const char* const begin = name.data() + word.size();
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(begin, name.data() + name.size(), number);
  const std::string_view digits(begin, static_cast<std::size_t>(end - begin));
  if (error != std::errc() || digits != std::to_string(number)) return std::nullopt;
  name.remove_prefix(word.size() + digits.size());
  return number;
}

class tPlanner {
 public:
  explicit tPlanner(tRules& rules) : rules_(rules) {}

  tPlan run() {
    rules_.used = {"System", "PXI System"};
    const bool hasNewName = rules_.classic.hasSection("System");
    plan_.classicOrder = takeChassis(rules_.classic, hasNewName ? "System" : "PXI System");
    plan_.expressOrder = takeChassis(rules_.express, "System");
    for (const tCheckedFile* file : {&rules_.classic, &rules_.express}) takeSections(*file);
    for (auto& [number, chassis] : plan_.chassis) {
      chassis.classicSlots = takeSlots(chassis, rules_.classic, chassis.isInClassicList);
      chassis.expressSlots = takeSlots(chassis, rules_.express, chassis.isInExpressList);
    }
    for (const tCheckedFile* file : {&rules_.classic, &rules_.express}) takeSlotSections(*file);
    return std::move(plan_);
  }

 private:
  tNumbers takeChassis(const tCheckedFile& file, const char* section) {
    if (!file.hasSection(section)) return {};
    const auto list = rules_.takeList(file, section, "ChassisList", aboutSession());
    plan_.isWhole = plan_.isWhole && list;
    for (const std::uint32_t number : list.value_or(tNumbers())) {
      tChassisPlan& chassis = plan(number);
      (&file == &rules_.classic ? chassis.isInClassicList : chassis.isInExpressList) = true;
      rules_.used.insert(chassis.section);
      if (file.hasSection(chassis.section)) continue;
      rules_.findings.addRefused("missing-section", file.at(section, "ChassisList"),
                                 "names chassis " + std::to_string(number) +
                                     ", which has no section [" + chassis.section +
                                     "] in this file",
                                 aboutSession(), itemNotFound(chassis.section, "SlotList"));
    }
    return list.value_or(tNumbers());
  }

  // A chassis that no list names opens by its number all the same.
  void takeSections(const tCheckedFile& file) {
    for (const std::string& section : file.sections()) {
      std::string_view rest = section;
      const auto number = takeNumbered(rest, "Chassis");
      if (number && rest.empty()) plan(*number);
    }
  }

  tNumbers takeSlots(tChassisPlan& chassis, const tCheckedFile& file, bool isListed) {
    constexpr const char* kItem = "SlotList";
    const bool isNeeded = isListed && file.hasSection(chassis.section);
    if (!isNeeded && !file.hasItem(chassis.section, kItem)) return {};
    const tQuestion question = isListed ? aboutSession() : aboutChassis(chassis.number, "slots");
    const auto list = rules_.takeList(file, chassis.section, kItem, question);
    for (const std::uint32_t slot : list.value_or(tNumbers())) {
      chassis.slots.emplace(slot, file.at(chassis.section, kItem));
      rules_.used.insert(chassis.slotSection(slot));
    }
    return list.value_or(tNumbers());
  }

  void takeSlotSections(const tCheckedFile& file) {
    for (const std::string& section : file.sections()) {
      std::string_view rest = section;
      const auto number = takeNumbered(rest, "Chassis");
      const auto slot = number ? takeNumbered(rest, "Slot") : std::nullopt;
      const auto chassis = number ? plan_.chassis.find(*number) : plan_.chassis.end();
      if (!slot || !rest.empty() || chassis == plan_.chassis.end()) continue;
      chassis->second.slots.emplace(*slot, file.at(section));
    }
  }

  tChassisPlan& plan(std::uint32_t number) {
    tChassisPlan& chassis = plan_.chassis[number];
    chassis.number = number;
    chassis.section = "Chassis" + std::to_string(number);
    return chassis;
  }

  tRules& rules_;
  tPlan plan_;
};

}  // namespace

tPlan checkLists(tRules& rules) { return tPlanner(rules).run(); }

}  // namespace tool
