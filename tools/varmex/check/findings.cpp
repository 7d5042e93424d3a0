#include "tools/varmex/check/findings.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace tool {

namespace {

tQuestion questionAbout(std::uint32_t chassis, std::string text, const std::string& attribute) {
  if (!attribute.empty()) text += ", " + attribute;
  return {std::move(text), chassis};
}

std::string refusalKey(const std::optional<std::uint32_t>& chassis, const std::string& refusal) {
  return (chassis ? std::to_string(*chassis) : "session") + '\n' + refusal;
}

}  // namespace

std::string textOf(const tPosition& position) {
  return position.line == 0 ? position.file : position.file + ':' + std::to_string(position.line);
}

const char* severityName(tSeverity severity) {
  return severity == tSeverity::wrong ? "wrong" : "doubtful";
}

tQuestion aboutSession() { return {"session", std::nullopt}; }

tQuestion aboutChassis(std::uint32_t chassis, const std::string& attribute) {
  return questionAbout(chassis, "chassis " + std::to_string(chassis), attribute);
}

tQuestion aboutSlot(std::uint32_t chassis, std::uint32_t slot, const std::string& attribute) {
  return questionAbout(chassis, "slot " + std::to_string(chassis) + '/' + std::to_string(slot),
                       attribute);
}

tQuestion aboutBridge(std::uint32_t chassis, std::uint32_t bridge, const std::string& attribute) {
  return questionAbout(chassis, "bridge " + std::to_string(chassis) + '/' + std::to_string(bridge),
                       attribute);
}

void tFindings::addRefused(const char* id, const tPosition& position, const std::string& message,
                           const tQuestion& question, const tRefusedAnswer& refusal) {
  alsoRefused(question, refusal);
  add({id, tSeverity::wrong, position, message, question.text + " fails: " + refusal.told(), "",
       question.text, refusal.words});
}

void tFindings::add(tSeverity severity, const char* id, const tPosition& position,
                    const std::string& message, const std::string& answer) {
  add({id, severity, position, message, answer});
}

void tFindings::add(tFinding finding) {
  if (isFull()) return;
  const tPosition& position = finding.position;
  const std::string key =
      textOf(position) + '\n' + position.item + '\n' + finding.id + '\n' + finding.message;
  if (known_.insert(key).second) list_.push_back(std::move(finding));
}

void tFindings::alsoRefused(const tQuestion& question, const tRefusedAnswer& refusal) {
  refusals_.insert(refusalKey(question.chassis, refusal.words));
}

bool tFindings::explain(const std::optional<std::uint32_t>& chassis,
                        const std::string& refusal) const {
  return refusals_.contains(refusalKey(chassis, refusal));
}

std::vector<tFinding> tFindings::sorted() const {
  std::vector<tFinding> list = list_;
  std::stable_sort(list.begin(), list.end(), [](const tFinding& a, const tFinding& b) {
    return std::tie(a.position.file, a.position.line) < std::tie(b.position.file, b.position.line);
  });
  return list;
}

}  // namespace tool
