// Trigger bridges and their line maps. The library opens a bridge by pxisys.ini alone.

#include "tools/varmex/check/rules.h"

namespace tool {

namespace {

constexpr std::int32_t kLineCount = 8;
constexpr const char* kBridgeList = "TriggerBridgeList";
constexpr const char* kMap = "LineMappingSpec";

class tBridgeCheck {
 public:
  tBridgeCheck(tRules& rules, const tChassisPlan& chassis, std::uint32_t bridge)
      : rules_(rules),
        chassis_(chassis),
        bridge_(bridge),
        section_(chassis.section + "TriggerBridge" + std::to_string(bridge)) {}

  void run(const tPosition& namedBy) {
    rules_.used.insert(section_);
    if (!rules_.firstWith(section_)) {
      rules_.findings.addRefused(
          "missing-section", namedBy,
          "names bridge " + std::to_string(bridge_) + ", which has no section [" + section_ + ']',
          question(""),
          unknownItem({{"type", "triggerBridge"},
                       {"bridgeNum", std::to_string(bridge_)},
                       {"chassisNum", std::to_string(chassis_.number)}}));
      return;
    }
    if (!rules_.classic.hasSection(section_)) {
      rules_.findings.addRefused("bridge-not-in-pxisys", rules_.express.at(section_),
                                 "the bridge stands in pxiesys.ini alone", question(""),
                                 itemNotFound(section_, kMap));
      return;
    }
    const auto source = takeBus("SourceTriggerBus", "BridgeSourceTriggerBus");
    const auto destination = takeBus("DestinationTriggerBus", "BridgeDestinationTriggerBus");
    if (source && source == destination) {
      rules_.doubt("bridge-onto-itself", rules_.classic.at(section_),
                   "source and destination are one bus", "that bus for both");
    }
    rules_.doubtDisagreement(section_, kMap);
    const auto map = rules_.takeUnsigned(rules_.classic, section_, kMap, question(""));
    if (map) {
      checkMap(chassis_.section + kMap + std::to_string(*map));
    } else {
      rules_.mayBeUsed.insert(chassis_.section + kMap);
    }
  }

 private:
  tQuestion question(const std::string& attribute) const {
    return aboutBridge(chassis_.number, bridge_, attribute);
  }
  tQuestion lineQuestion(std::int32_t line) const {
    return question("BridgeLineMapping" + std::to_string(line));
  }

  std::optional<std::uint32_t> takeBus(const char* item, const char* attribute) {
    rules_.doubtDisagreement(section_, item);
    const auto bus = rules_.takeUnsigned(rules_.classic, section_, item, question(attribute));
    if (bus && chassis_.areBusesKnown && !chassis_.buses.contains(*bus)) {
      rules_.doubt("bridge-to-missing-bus", rules_.classic.at(section_, item),
                   "the chassis has no trigger bus " + std::to_string(*bus),
                   question(attribute).text + ": " + std::to_string(*bus));
    }
    return bus;
  }

  void checkMap(const std::string& section) {
    // Bridges share maps.
    if (!rules_.used.insert(section).second) return;
    const tCheckedFile* const file = rules_.firstWith(section);
    if (!file) return missMap(section);
    for (std::int32_t line = 0; line < kLineCount; ++line) {
      const std::string item = "PXI_TRIG" + std::to_string(line);
      rules_.doubtDisagreement(section, item);
      const auto numbers = rules_.takeList(*file, section, item, lineQuestion(line));
      for (const std::uint32_t number : numbers.value_or(tNumbers())) {
        const auto destination = static_cast<std::int32_t>(number);
        if (destination >= 0 && destination < kLineCount) continue;
        const tRefusedAnswer refusal =
            destination == kLineCount
                ? outOfRange()
                : conflict({{"attribute", item}, {"destinationLine", std::to_string(destination)}});
        rules_.findings.addRefused("line-map-out-of-range", file->at(section, item),
                                   "no trigger line: " + std::to_string(destination),
                                   lineQuestion(line), refusal);
        break;  // the library reads no further
      }
    }
  }

  void missMap(const std::string& section) {
    const auto refusal = [&](std::int32_t line) {
      return notAvailable(
          {{"itemName", "PXI_TRIG" + std::to_string(line)}, {"mappingSection_", section}});
    };
    rules_.findings.addRefused("missing-section", rules_.classic.at(section_, kMap),
                               "names a line map that has no section [" + section + ']',
                               lineQuestion(0), refusal(0));
    for (std::int32_t line = 1; line < kLineCount; ++line) {
      rules_.findings.alsoRefused(lineQuestion(line), refusal(line));
    }
  }

  tRules& rules_;
  const tChassisPlan& chassis_;
  std::uint32_t bridge_;
  std::string section_;
};

}  // namespace

void checkBridges(tRules& rules, const tChassisPlan& chassis) {
  std::map<std::uint32_t, tPosition> bridges;
  for (const tCheckedFile* file : {&rules.classic, &rules.express}) {
    if (!file->hasItem(chassis.section, kBridgeList)) continue;
    const auto list = rules.takeList(*file, chassis.section, kBridgeList,
                                     aboutChassis(chassis.number, "trigger bridges"));
    if (!list) rules.mayBeUsed.insert(chassis.section + kMap);
    for (const std::uint32_t bridge : list.value_or(tNumbers())) {
      bridges.emplace(bridge, file->at(chassis.section, kBridgeList));
    }
  }
  for (const auto& [bridge, namedBy] : bridges) {
    if (rules.findings.isFull()) return;
    tBridgeCheck(rules, chassis, bridge).run(namedBy);
  }
}

}  // namespace tool
