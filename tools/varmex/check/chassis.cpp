// What a chassis says of itself, and what it takes to open it.

#include "tools/varmex/check/rules.h"
#include "tools/varmex/text/slotPaths.h"
#include "varmex/varmex.h"

namespace tool {

namespace {

tRefusedAnswer disagreeRefusal(const std::string& section, const char* item) {
  return conflict({{"itemName", item}, {"sectionName_", section}});
}

void checkName(tRules& rules, const tChassisPlan& chassis, const char* item) {
  const std::string& section = chassis.section;
  const tQuestion question = aboutChassis(chassis.number);
  if (rules.disagree(section, item)) {
    rules.findings.addRefused("files-disagree", rules.express.at(section, item),
                              rules.disagreement(section, item), question,
                              disagreeRefusal(section, item));
  }
  if (rules.classic.hasItem(section, item) || rules.express.hasItem(section, item)) return;
  rules.findings.addRefused("missing-item", rules.firstWith(section)->at(section, item),
                            std::string(item) + " is missing in both files", question,
                            notAvailable({{"itemName", item}, {"sectionName_", section}}));
}

// A chassis of pxisys.ini alone is known by the path to its second slot.
void checkSlotPath(tRules& rules, const tChassisPlan& chassis) {
  const std::string section = chassis.slotSection(2);
  const tCheckedFile& file = rules.classic;
  const tQuestion question = aboutChassis(chassis.number);
  const tRefusedAnswer invalid = conflict(
      {{"message", "The chassis does not have valid slot paths in the system description file."}});
  const auto refuse = [&](const char* id, const char* item, const std::string& message,
                          const tRefusedAnswer& refusal) {
    rules.findings.addRefused(id, file.at(section, item, file.at(chassis.section)), message,
                              question, refusal);
  };
  const auto path = file.text(section, kSlotPathItem);
  if (!path) {
    refuse("missing-item", kSlotPathItem,
           std::string(kSlotPathItem) +
               " of slot 2 is missing, by which a chassis of pxisys.ini is known",
           itemNotFound(section, kSlotPathItem));
  } else if (!isSlotPath(*path)) {
    refuse("bad-slot-path", kSlotPathItem, '"' + *path + "\" is no path: it has no comma", invalid);
  }
  const std::string root = file.text(section, kRootBusItem).value_or("0");
  const auto bus = rootBusOf(root);
  if (!bus) {
    refuse("bad-number", kRootBusItem,
           '"' + root + "\" is no decimal number, which the root bus of slot 2 must be here",
           softwareFault({{"wrappedMessage",
                           "bad lexical cast: source type value could not be interpreted as "
                           "target"}}));
  } else if (*bus > kLastRootBus) {
    refuse("bad-slot-path", kRootBusItem,
           "bus " + root + " is beyond " + std::to_string(kLastRootBus), invalid);
  }
}

void checkIdentity(tRules& rules, const tChassisPlan& chassis) {
  constexpr const char* kSerialNumber = "SerialNumber";
  checkName(rules, chassis, "Vendor");
  checkName(rules, chassis, "Model");
  if (!rules.express.hasSection(chassis.section)) return checkSlotPath(rules, chassis);
  if (rules.express.hasItem(chassis.section, kSerialNumber)) return;
  rules.findings.addRefused("missing-item", rules.express.at(chassis.section, kSerialNumber),
                            std::string(kSerialNumber) + " is missing",
                            aboutChassis(chassis.number),
                            itemNotFound(chassis.section, kSerialNumber));
}

void checkAgreement(tRules& rules, const tChassisPlan& chassis, const char* item,
                    const char* attribute, const tRefusedAnswer& refusal) {
  if (!rules.disagree(chassis.section, item)) return;
  rules.findings.addRefused("files-disagree", rules.express.at(chassis.section, item),
                            rules.disagreement(chassis.section, item),
                            aboutChassis(chassis.number, attribute), refusal);
}

void checkTriggerManager(tRules& rules, const tChassisPlan& chassis) {
  constexpr const char* kItem = "TriggerManager";
  for (const tCheckedFile* file : {&rules.classic, &rules.express}) {
    if (file->text(chassis.section, kItem) != "") continue;
    if (rules.disagree(chassis.section, kItem)) continue;
    const tQuestion question = aboutChassis(chassis.number, "ChassisTriggerManagerLibrary");
    rules.findings.addRefused("empty-trigger-manager", file->at(chassis.section, kItem),
                              "the trigger manager's name is empty", question,
                              noTriggerManagerLibrary());
    rules.findings.alsoRefused(
        question, conflict({{"attribute", "varmex_str_ChassisTriggerManagerIdentifier"},
                            {"tmIdentifier", "<empty>"}}));
  }
}

}  // namespace

void checkChassis(tRules& rules, const tChassisPlan& chassis) {
  if (!rules.firstWith(chassis.section)) return;
  const std::string& section = chassis.section;
  checkIdentity(rules, chassis);
  checkAgreement(rules, chassis, "TriggerManager", "ChassisTriggerManagerIdentifier",
                 disagreeRefusal(section, "TriggerManager"));
  checkAgreement(rules, chassis, "TriggerBusList", "ChassisTriggerBusList",
                 disagreeRefusal(section, "TriggerBusList"));
  checkAgreement(rules, chassis, "DescriptionFile", "ChassisDescriptionFile",
                 notAvailable({{"attribute", std::to_string(varmex_str_ChassisDescriptionFile)}}));
  checkTriggerManager(rules, chassis);
}

}  // namespace tool
