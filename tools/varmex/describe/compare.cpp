#include "tools/varmex/describe/compare.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <sstream>

#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/words.h"

namespace tool {

namespace {

// What is told of an item, by a person's name for it.
struct tFact {
  const char* label;
  std::string value;
};
using tFacts = std::vector<tFact>;

struct tLabel {
  const char* label;
  const char* attribute;
};

// What is made from others is left out: identity, names of modules and of trigger lines.
constexpr tLabel kChassisLabels[] = {{"vendor", "ChassisVendor"},
                                     {"model", "ChassisModel"},
                                     {"serial number", "ChassisSerialNumber"},
                                     {"description file", "ChassisDescriptionFile"},
                                     {"trigger buses", "ChassisTriggerBusList"},
                                     {"trigger manager", "ChassisTriggerManagerIdentifier"},
                                     {"trigger manager library", "ChassisTriggerManagerLibrary"},
                                     {"native trigger manager", "IsTriggerManagerNative"}};

constexpr tLabel kSlotLabels[] = {{"slot link width 1", "PeripheralSlotLinkWidth1"},
                                  {"slot link width 2", "PeripheralSlotLinkWidth2"},
                                  {"link origin 1", "SystemSlotLinkOrigin1"},
                                  {"link origin 2", "SystemSlotLinkOrigin2"},
                                  {"slot path", "PCISlotPath"},
                                  {"root bus", "PCISlotPathRootBus"},
                                  {"left local bus", "LocalBusLeft"},
                                  {"right local bus", "LocalBusRight"},
                                  {"trigger bus", "TriggerBusNumber"}};

constexpr const char* kUnreadable = "(can't be read)";
constexpr const char* kAddresses = "PCI addresses";

bool isUnreadable(const tJson& item, const char* name) { return !markOf(item, name).empty(); }

std::string valueOf(const tJson& item, const char* name) {
  return isUnreadable(item, name) ? kUnreadable : textOf(item, name);
}

// "x4"
std::string widthOf(const tJson& item, const char* name) {
  const std::string width = valueOf(item, name);
  return numberOf(item, name) ? 'x' + width : width;
}

// Something in a slot that has functions, or a controller that the description tells of.
bool hasModule(const tJson& slot) {
  if (!slot["Devices"].empty()) return true;
  constexpr const char* kNames[] = {"SystemSlotVendor", "SystemSlotModel",
                                    "SystemSlotInstanceName"};
  return std::any_of(std::begin(kNames), std::end(kNames),
                     [&](const char* name) { return !textOf(slot, name).empty(); });
}

// A slot of which a fault keeps back whether there is one.
bool hidesModule(const tJson& slot) {
  return !hasModule(slot) && (isUnreadable(slot, "opening") || isUnreadable(slot, "SlotType") ||
                              isUnreadable(slot, "Devices"));
}

tFacts factsOfChassis(const tJson& chassis) {
  tFacts facts;
  for (const auto& [label, attribute] : kChassisLabels) {
    facts.push_back({label, valueOf(chassis, attribute)});
  }
  facts.push_back({"list of slots", isUnreadable(chassis, "Slots") ? kUnreadable : ""});
  facts.push_back({"list of bridges", isUnreadable(chassis, "TriggerBridges") ? kUnreadable : ""});
  return facts;
}

std::string triggerValueOf(const tJson& slot, const char* number, const char* line,
                           const char* controller) {
  return isUnreadable(slot, number) ? kUnreadable : triggerOf(slot, number, line, controller);
}

tFacts factsOfSlot(const tJson& slot) {
  tFacts facts = {{"type", isUnreadable(slot, "SlotType") ? kUnreadable : slotTypeName(slot)},
                  {"star line", triggerValueOf(slot, "StarTriggerNumber", "StarTriggerLine",
                                               "StarTriggerControllerName")},
                  {"dstar set", triggerValueOf(slot, "DStarTriggerNumber", "DStarTriggerSet",
                                               "DStarTriggerControllerName")},
                  {"list of devices", isUnreadable(slot, "Devices") ? kUnreadable : ""}};
  for (const auto& [label, attribute] : kSlotLabels) {
    facts.push_back({label, valueOf(slot, attribute)});
  }
  return facts;
}

tFacts factsOfBridge(const tJson& bridge) {
  return {{"source bus", valueOf(bridge, "BridgeSourceTriggerBus")},
          {"destination bus", valueOf(bridge, "BridgeDestinationTriggerBus")},
          {"lines", lineMapOf(bridge)}};
}

// A chassis, slot, module or bridge with what tells it from others of its kind.
struct tPart {
  const tJson* json;
  std::string chassis;  // in the numbering of the later description
  std::string number;   // within its chassis; empty for a chassis
  std::string shown;    // its place in its own description
  std::string kind;     // vendor and model; of a chassis, its identity
  std::string name;
  std::string title;
  tFacts facts;
  bool isPair = false;
};
using tParts = std::vector<tPart>;

using tPairs = std::vector<std::pair<tPart*, tPart*>>;
using tKey = std::function<std::optional<std::string>(const tPart&)>;

// Makes pairs of what has the same key on both sides and is in no pair yet, in order.
void pairUp(tParts& before, tParts& after, const tKey& key, tPairs& pairs) {
  std::map<std::string, std::deque<tPart*>> waiting;
  for (tPart& part : after) {
    if (part.isPair) continue;
    if (const auto text = key(part)) waiting[*text].push_back(&part);
  }
  for (tPart& part : before) {
    const auto text = part.isPair ? std::nullopt : key(part);
    const auto found = text ? waiting.find(*text) : waiting.end();
    if (found == waiting.end() || found->second.empty()) continue;
    pairs.emplace_back(&part, found->second.front());
    part.isPair = found->second.front()->isPair = true;
    found->second.pop_front();
  }
}

std::string placeOf(const tPart& part) { return part.chassis + '/' + part.number; }

std::string keyOf(const std::string& a, const std::string& b, const std::string& c = {}) {
  return a + '\n' + b + '\n' + c;
}

class tComparison {
 public:
  std::vector<tChange> run(const tJson& before, const tJson& after) {
    tParts oldChassis = chassisOf(before);
    tParts newChassis = chassisOf(after);
    compareChassis(oldChassis, newChassis);
    // A chassis that is gone keeps its number, marked so that it meets no other.
    tParts oldModules;
    tParts newModules;
    for (tPart& chassis : oldChassis) addModules(chassis, oldModules, hiddenBefore_);
    for (tPart& chassis : newChassis) addModules(chassis, newModules, hiddenNow_);
    compareModules(oldModules, newModules);
    tParts oldRest;
    tParts newRest;
    for (const tPart& chassis : oldChassis) addRest(chassis, oldRest);
    for (const tPart& chassis : newChassis) addRest(chassis, newRest);
    compareRest(oldRest, newRest);
    return std::move(changes_);
  }

 private:
  static tParts chassisOf(const tJson& description) {
    tParts parts;
    for (const tJson& chassis : description["Chassis"]) {
      const std::string number = textOf(chassis, "ChassisNumber");
      parts.push_back(
          {&chassis,
           number,
           {},
           number,
           textOf(chassis, "ChassisIdentity"),
           {},
           joined({textOf(chassis, "ChassisVendor"), textOf(chassis, "ChassisModel")}, " "),
           factsOfChassis(chassis)});
    }
    return parts;
  }

  void compareChassis(tParts& before, tParts& after) {
    tPairs pairs;
    pairUp(
        before, after, [](const tPart& c) { return keyOf(c.kind, c.chassis); }, pairs);
    pairUp(
        before, after,
        [](const tPart& c) { return c.kind.empty() ? std::nullopt : std::optional(c.kind); },
        pairs);
    pairUp(
        before, after, [](const tPart& c) { return c.chassis; }, pairs);
    for (const auto& [old, now] : pairs) {
      if (old->shown != now->shown) addMove("chassis", *old, *now);
      compareFacts("chassis", *old, *now);
      old->chassis = now->chassis;
    }
    for (tPart& part : before) {
      if (part.isPair) continue;
      add(tChange::isGone, "chassis", &part, nullptr);
      part.chassis += " before";
    }
    for (const tPart& part : after) {
      if (!part.isPair) add(tChange::isNew, "chassis", nullptr, &part);
    }
  }

  // What a person calls a module: "DMM ORX-4081", else by its maker and model, else by its address.
  static std::string titleOfModule(const tJson& slot, const std::string& vendor,
                                   const std::string& model, const std::string& name) {
    const std::string title = joined({name.empty() ? vendor : name, model}, " ");
    return title.empty() ? moduleOf(slot) : title;
  }

  // A module that lost one is not the same any more, whatever its addresses are.
  static std::string functionCountOf(const tJson& devices) {
    return devices.empty() ? "" : std::to_string(devices.size());
  }

  static void addModules(const tPart& chassis, tParts& modules, std::set<std::string>& hidden) {
    for (const tJson& slot : (*chassis.json)["Slots"]) {
      const std::string number = textOf(slot, "SlotNumber");
      if (hidesModule(slot)) hidden.insert(chassis.chassis + '/' + number);
      if (!hasModule(slot)) continue;
      const tJson& devices = slot["Devices"];
      const bool isSystem = slot.contains("SystemSlotModel");
      const tJson& source = isSystem || devices.empty() ? slot : devices.front();
      const std::string prefix = &source == &slot ? "SystemSlot" : "Device";
      const auto text = [&](const char* name) { return textOf(source, (prefix + name).c_str()); };
      const std::string vendor = text("Vendor");
      const std::string model = text("Model");
      const std::string name = text("InstanceName");
      const tJson& module = devices.empty() ? slot : devices.front();
      modules.push_back({&slot,
                         chassis.chassis,
                         number,
                         chassis.shown + '/' + number,
                         vendor.empty() && model.empty() ? "" : keyOf(vendor, model),
                         name,
                         titleOfModule(slot, vendor, model, name),
                         {{"vendor", vendor},
                          {"model", model},
                          {"name", name},
                          {"link width", widthOf(module, "PeripheralModuleLinkWidthNegotiated")},
                          {"widest link", widthOf(module, "PeripheralModuleLinkWidthMax")},
                          {"covered slots", valueOf(module, "PeripheralModuleOccupiedSlotList")},
                          {"functions", functionCountOf(devices)},
                          {kAddresses, addressesOf(slot, tPciNotation::decimal)}}});
    }
  }

  void compareModules(tParts& before, tParts& after) {
    // Where it stands, then by its name in the same chassis or in another, then by its place, then
    // by what it is.
    const auto named = [](const tPart& m, const std::string& chassis) {
      return m.name.empty() ? std::nullopt : std::optional(keyOf(chassis, m.kind, m.name));
    };
    const auto unnamed = [](const tPart& m, const std::string& chassis) {
      const bool fits = m.name.empty() && !m.kind.empty();
      return fits ? std::optional(keyOf(chassis, m.kind)) : std::nullopt;
    };
    const tKey keys[] = {[](const tPart& m) { return keyOf(placeOf(m), m.kind, m.name); },
                         [&](const tPart& m) { return named(m, m.chassis); },
                         [&](const tPart& m) { return named(m, ""); },
                         [](const tPart& m) { return keyOf(placeOf(m), m.kind); },
                         [&](const tPart& m) { return unnamed(m, m.chassis); },
                         [&](const tPart& m) { return unnamed(m, ""); }};
    tPairs pairs;
    for (const tKey& key : keys) pairUp(before, after, key, pairs);
    for (const auto& [old, now] : pairs) {
      const bool moved = placeOf(*old) != placeOf(*now);
      if (moved) {
        addMove("module", *old, *now);
        old->facts.back().value = now->facts.back().value;
      }
      compareFacts("module", *old, *now);
    }
    tPairs replaced;
    pairUp(before, after, placeOf, replaced);
    for (const auto& [old, now] : replaced) {
      changes_.push_back({tChange::hasChanged,
                          "slot",
                          old->shown,
                          now->shown,
                          {},
                          "module",
                          old->title,
                          now->title});
    }
    // What a fault hides neither came nor went.
    for (tPart& part : before) part.isPair = part.isPair || hiddenNow_.contains(placeOf(part));
    for (tPart& part : after) part.isPair = part.isPair || hiddenBefore_.contains(placeOf(part));
    addRemaining("module", before, after);
  }

  static void addRest(const tPart& chassis, tParts& rest) {
    const auto add = [&](const char* list, const char* name, const char* item, auto factsOf) {
      for (const tJson& json : (*chassis.json)[list]) {
        const std::string number = textOf(json, name);
        const std::string shown = chassis.shown + '/' + number;
        rest.push_back({&json, chassis.chassis, number, shown, item, {}, {}, factsOf(json)});
      }
    };
    add("Slots", "SlotNumber", "slot", factsOfSlot);
    add("TriggerBridges", "BridgeNumber", "bridge", factsOfBridge);
  }

  void compareRest(tParts& before, tParts& after) {
    tPairs pairs;
    pairUp(
        before, after, [](const tPart& p) { return keyOf(p.kind, placeOf(p)); }, pairs);
    for (const auto& [old, now] : pairs) compareFacts(old->kind, *old, *now);
    for (const char* const item : {"slot", "bridge"}) {
      tParts oldOnes;
      tParts newOnes;
      for (const tPart& part : before) {
        if (part.kind == item && !isOfModule(part)) oldOnes.push_back(part);
      }
      for (const tPart& part : after) {
        if (part.kind == item && !isOfModule(part)) newOnes.push_back(part);
      }
      addRemaining(item, oldOnes, newOnes);
    }
  }

  static bool isOfModule(const tPart& part) { return part.kind == "slot" && hasModule(*part.json); }

  // What came or went with its chassis is told with that.
  void addRemaining(const char* item, const tParts& before, const tParts& after) {
    for (const tPart& part : before) {
      if (!part.isPair && !isGone_[part.chassis]) add(tChange::isGone, item, &part, nullptr);
    }
    for (const tPart& part : after) {
      if (!part.isPair && !isNew_[part.chassis]) add(tChange::isNew, item, nullptr, &part);
    }
  }

  void add(tChange::tKind kind, const char* item, const tPart* old, const tPart* now) {
    const tPart& part = old ? *old : *now;
    if (part.number.empty())
      (old ? isGone_[part.chassis + " before"] : isNew_[part.chassis]) = true;
    changes_.push_back(
        {kind, item, old ? old->shown : "", now ? now->shown : "", part.title, {}, {}, {}});
  }

  void addMove(const char* item, const tPart& old, const tPart& now) {
    changes_.push_back({tChange::hasMoved, item, old.shown, now.shown, now.title, {}, {}, {}});
  }

  void compareFacts(const std::string& item, const tPart& old, const tPart& now) {
    const auto addFact = [&](const char* label, const std::string& from, const std::string& to) {
      if (from == to) return;
      changes_.push_back(
          {tChange::hasChanged, item, old.shown, now.shown, now.title, label, from, to});
    };
    // Of an item that can't be opened nothing else is known.
    const bool couldOpen = !isUnreadable(*old.json, "opening");
    const bool canOpen = !isUnreadable(*now.json, "opening");
    if (!couldOpen || !canOpen) {
      // Nor of what is in it: that neither came nor went.
      (canOpen ? isNew_ : isGone_)[now.chassis] |= item == "chassis";
      addFact("state", couldOpen ? "readable" : kUnreadable, canOpen ? "readable" : kUnreadable);
      return;
    }
    for (std::size_t n = 0; n < now.facts.size(); ++n) {
      if (isHidden(old, n) || isHidden(now, n)) continue;
      addFact(now.facts[n].label, old.facts[n].value, now.facts[n].value);
    }
  }

  // A type that can't be read hides what depends on it, and is told itself.
  static bool isHidden(const tPart& part, std::size_t fact) {
    return part.facts[fact].value.empty() && isUnreadable(*part.json, "SlotType");
  }

  std::vector<tChange> changes_;
  std::set<std::string> hiddenBefore_;  // places of which nobody knows whether they hold a module
  std::set<std::string> hiddenNow_;
  std::map<std::string, bool> isGone_;
  std::map<std::string, bool> isNew_;
};

// What was there or is, in words.
std::string wordsOf(const tChange& change, const std::string& value, tPciNotation notation) {
  if (value.empty()) return "(none)";
  if (change.attribute != kAddresses || value == kUnreadable) return value;
  std::vector<std::string> addresses;
  std::istringstream words(value);
  for (std::string word; words >> word;) {
    addresses.push_back(textOf(parseAddress(word), notation));
  }
  return joined(addresses, " ");
}

// "chassis 1, Orlindt ORX-1820", "slot 1/9", "bridge 1/2"; modules by what they are called.
std::string placeInWords(const tChange& change, const std::string& place, const char* preposition) {
  if (change.item == "module") return change.title + ' ' + preposition + " slot " + place;
  return change.item + ' ' + place + (change.title.empty() ? "" : ", " + change.title);
}

constexpr const char* kEvents[] = {"new", "gone", "moved", "changed"};
constexpr const char* kItems[] = {"chassis", "slot", "module", "bridge"};

std::string withHyphens(std::string words) {
  std::replace(words.begin(), words.end(), ' ', '-');
  return words;
}

}  // namespace

std::vector<tChange> compare(const tJson& before, const tJson& after) {
  return tComparison().run(before, after);
}

std::string lineOf(const tChange& change, tPciNotation notation) {
  switch (change.kind) {
    case tChange::isNew: return "new: " + placeInWords(change, change.after, "in");
    case tChange::isGone: return "gone: " + placeInWords(change, change.before, "from");
    case tChange::hasMoved: {
      const std::string places = change.before + " -> " + change.after;
      if (change.item == "module") return change.title + ": slot " + places;
      return change.item + ' ' + places + ": " + change.title;
    }
    default:
      return placeInWords(change, change.after, "in") + ": " + change.attribute + ' ' +
             wordsOf(change, change.from, notation) + " -> " + wordsOf(change, change.to, notation);
  }
}

tJson jsonOf(const tChange& change) {
  tJson json = {{"event", kEvents[change.kind]}, {"item", change.item}};
  const auto add = [&](const char* name, const std::string& value) {
    if (!value.empty()) json[name] = value;
  };
  add("before", change.before);
  add("after", change.after);
  add("title", change.title);
  add("attribute", change.attribute);
  add("from", change.from);
  add("to", change.to);
  return json;
}

std::vector<std::string> kindsOfChange() {
  std::vector<std::string> kinds(std::begin(kEvents), std::end(kEvents));
  kinds.insert(kinds.end(), std::begin(kItems), std::end(kItems));
  for (const char* const attribute :
       {"link width", "widest link", "covered slots", "functions", kAddresses, "name", "type",
        "star line", "dstar set", "lines"}) {
    kinds.push_back(withHyphens(attribute));
  }
  for (const auto& [label, attribute] : kChassisLabels) kinds.push_back(withHyphens(label));
  for (const auto& [label, attribute] : kSlotLabels) kinds.push_back(withHyphens(label));
  return kinds;
}

bool isOfKind(const tChange& change, const std::string& kind) {
  return kind == kEvents[change.kind] || kind == change.item ||
         kind == withHyphens(change.attribute);
}

}  // namespace tool
