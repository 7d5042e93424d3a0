#include "tools/varmex/check/rules.h"

#include <algorithm>

namespace tool {

const tCheckedFile* tRules::firstWith(const std::string& section) const {
  if (classic.hasSection(section)) return &classic;
  return express.hasSection(section) ? &express : nullptr;
}

std::optional<std::int32_t> tRules::takeNumber(const tCheckedFile& file, const std::string& section,
                                               const std::string& item,
                                               const std::optional<tQuestion>& question) {
  const auto reading = file.number(section, item);
  if (!reading) refuse(reading, file.at(section, item), question);
  return reading.value;
}

std::optional<std::uint32_t> tRules::takeUnsigned(const tCheckedFile& file,
                                                  const std::string& section,
                                                  const std::string& item,
                                                  const std::optional<tQuestion>& question) {
  const auto reading = file.unsignedNumber(section, item);
  if (!reading) refuse(reading, file.at(section, item), question);
  return reading.value;
}

std::optional<tNumbers> tRules::takeList(const tCheckedFile& file, const std::string& section,
                                         const std::string& item,
                                         const std::optional<tQuestion>& question,
                                         const std::optional<tPosition>& otherwise) {
  const auto reading = file.list(section, item);
  if (!reading) {
    refuse(reading, otherwise ? file.at(section, item, *otherwise) : file.at(section, item),
           question);
    // "SlotList" leads from [Chassis1] to [Chassis1Slot2].
    if (file.hasItem(section, item)) mayBeUsed.insert(section + item.substr(0, item.rfind("List")));
    return std::nullopt;
  }
  std::set<std::uint32_t> once;
  tNumbers list;
  for (const std::uint32_t number : *reading) {
    if (once.insert(number).second) {
      list.push_back(number);
    } else {
      doubt("repeated-number", file.at(section, item), "names " + std::to_string(number) + " again",
            "as if named once");
    }
  }
  return list;
}

bool tRules::mayUse(const std::string& section) const {
  return std::any_of(mayBeUsed.begin(), mayBeUsed.end(),
                     [&](const std::string& name) { return section.starts_with(name); });
}

bool tRules::disagree(const std::string& section, const std::string& item) const {
  const auto inClassic = classic.text(section, item);
  const auto inExpress = express.text(section, item);
  return inClassic && inExpress && *inClassic != *inExpress;
}

std::string tRules::disagreement(const std::string& section, const std::string& item) const {
  return '"' + express.text(section, item).value_or("") + "\" here and \"" +
         classic.text(section, item).value_or("") + "\" in " + classic.name() + ", line " +
         std::to_string(classic.at(section, item).line);
}

void tRules::doubtDisagreement(const std::string& section, const std::string& item) {
  if (!disagree(section, item)) return;
  doubt("files-disagree", express.at(section, item), disagreement(section, item),
        "as " + std::string(classic.name()) + " has it");
}

void checkUnused(tRules& rules) {
  for (const tCheckedFile* file : {&rules.classic, &rules.express}) {
    for (const std::string& section : file->sections()) {
      if (rules.used.contains(section) || rules.mayUse(section)) continue;
      rules.doubt("unreferenced-section", file->at(section), "nothing refers to the section",
                  "as without the section, unless it is asked for by its number");
    }
  }
}

}  // namespace tool
