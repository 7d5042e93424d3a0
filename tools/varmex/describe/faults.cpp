#include "tools/varmex/describe/faults.h"

#include <algorithm>
#include <iostream>
#include <map>

#include "tools/varmex/describe/fields.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/table.h"

namespace tool {

namespace {

constexpr std::size_t kMostShown = 20;
constexpr std::size_t kLongestReason = 400;  // in bytes

std::string nameOf(const tJson& item) {
  const std::string of = item.contains("from") ? " of " + textOf(item, "from") : "";
  if (item.contains("place")) {
    return (item.contains("name") ? "module in slot " : "slot ") + textOf(item, "place") + of;
  }
  if (item.contains("chassis")) return "chassis " + textOf(item, "chassis") + of;
  if (item.contains("from")) return textOf(item, "from");
  const std::string chassis = textOf(item, "ChassisNumber");
  const std::string slot = chassis + '/' + textOf(item, "SlotNumber");
  if (item.contains("BridgeNumber")) {
    return "bridge " + textOf(item, "BridgeNumber") + " of chassis " + chassis;
  }
  if (item.contains("DeviceName")) return "module in slot " + slot;
  if (item.contains("SlotNumber")) return "slot " + slot;
  return chassis.empty() ? "description" : "chassis " + chassis;
}

// Every failure of an item and of all below it, in the order in which they are told.
template <class Json, class Visit>
void visitFailures(Json& item, const Visit& visit) {
  if (item.contains("machine")) visitFailures(item["machine"], visit);
  if (item.contains("failures")) {
    for (auto& [about, failure] : item["failures"].items()) visit(item, about, failure);
  }
  for (const char* const list : {"Chassis", "Slots", "Devices", "TriggerBridges", "modules"}) {
    if (!item.contains(list)) continue;
    for (Json& below : item[list]) visitFailures(below, visit);
  }
}

std::string whereOf(const tJson& item, const std::string& about) {
  return about == "opening" ? nameOf(item) : nameOf(item) + ", " + about;
}

std::string shortened(std::string text) {
  if (text.size() <= kLongestReason) return text;
  std::size_t end = kLongestReason;
  while (end > 0 && (text[end] & 0xC0) == 0x80) --end;
  return text.substr(0, end) + "...";
}

std::string sentenceOf(const tJson& failure) {
  return failureText(failure["constant"].get<std::string>(), failure["code"].get<std::int32_t>(),
                     failure["sentence"].get<std::string>());
}

std::string headOf(const tFault& fault) { return fault.mark.empty() ? "" : fault.mark + "  "; }

std::string wordsOf(const tFault& fault) {
  const std::string more =
      fault.answers > 1 ? " and " + std::to_string(fault.answers - 1) + " more" : "";
  return fault.where + more + ": " + shortened(fault.reason);
}

}  // namespace

void markFaults(tJson& description) {
  std::map<std::string, std::string> marks;
  visitFailures(description, [&](const tJson&, const std::string&, tJson& failure) {
    const std::string mark = '!' + std::to_string(marks.size() + 1);
    failure["mark"] = marks.try_emplace(sentenceOf(failure), mark).first->second;
  });
}

void addFault(tFaults& faults, const std::string& mark, const std::string& where,
              const std::string& reason) {
  const auto known = std::find_if(faults.begin(), faults.end(), [&](const tFault& fault) {
    return fault.mark == mark && fault.reason == reason;
  });
  if (known == faults.end()) {
    faults.push_back({mark, where, 1, reason});
  } else {
    ++known->answers;
  }
}

tFaults faultsOf(const tJson& part) {
  tFaults faults;
  visitFailures(part, [&](const tJson& item, const std::string& about, const tJson& failure) {
    addFault(faults, failure["mark"].get<std::string>(), whereOf(item, about), sentenceOf(failure));
  });
  return faults;
}

std::string markOf(const tJson& item, const char* name) {
  const auto failures = item.find("failures");
  if (failures == item.end()) return {};
  const auto failure = failures->find(name);
  return failure == failures->end() ? "" : failure->value("mark", "!");
}

std::string lineOf(const tFault& fault) { return headOf(fault) + wordsOf(fault); }

void tellFaults(const tFaults& faults, const std::string& hidden) {
  for (const tFault& fault : faults) tellFailure(std::runtime_error(lineOf(fault)));
  if (faults.empty()) return;
  std::cerr << faults.size() << (faults.size() == 1 ? " fault" : " faults") << " may hide "
            << hidden << ". Run \"varmex check\" to see what to mend.\n";
}

std::string summaryOf(const tFaults& faults) {
  if (faults.empty()) return {};
  std::size_t answers = 0;
  for (const tFault& fault : faults) answers += fault.answers;
  return std::to_string(faults.size()) + (faults.size() == 1 ? " fault hides " : " faults hide ") +
         std::to_string(answers) + (answers == 1 ? " answer" : " answers") +
         ". Run \"varmex check\" to see what to mend.";
}

void showFaults(const tJson& description, std::ostream& out) {
  const tFaults faults = faultsOf(description);
  if (faults.empty()) return;
  out << '\n';
  for (std::size_t n = 0; n < faults.size() && n < kMostShown; ++n) {
    showParagraph(headOf(faults[n]), visible(wordsOf(faults[n])), out);
  }
  if (faults.size() > kMostShown) {
    out << "and " << faults.size() - kMostShown << " more faults\n";
  }
  showParagraph("", summaryOf(faults), out);
}

}  // namespace tool
