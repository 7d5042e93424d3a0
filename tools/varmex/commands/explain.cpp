#include <algorithm>
#include <cstring>
#include <iostream>
#include <iterator>
#include <optional>

#include "source/observed/observed.h"
#include "tools/varmex/check/registryText.h"
#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/address.h"
#include "tools/varmex/describe/attributes.h"
#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/lockNotice.h"
#include "tools/varmex/describe/modules.h"
#include "tools/varmex/describe/place.h"
#include "tools/varmex/describe/reason.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/output.h"
#include "tools/varmex/text/shownPaths.h"
#include "tools/varmex/text/table.h"

namespace tool {

namespace {

// An item of the model, what it is called, and what can be asked of it.
struct tSubject {
  std::string name;
  observed::tPlace place;
  tAttributes attributes;
};
using tSubjects = std::vector<tSubject>;

std::string placeText(std::uint32_t chassis, std::uint32_t slot) {
  return std::to_string(chassis) + '/' + std::to_string(slot);
}

tSubject deviceAt(const tPciAddress& address) {
  return {"device " + textOf(address, tPciNotation::decimal),
          tDeviceAddress{0, address.bus, address.device, address.function}, kDeviceAttributes};
}

// A slot, and the first PCI function of the module that is anchored in it.
tSubjects slotAndModule(const varmex::Session& session, std::uint32_t chassis, std::uint32_t slot) {
  const std::string text = placeText(chassis, slot);
  tSubjects subjects = {{"slot " + text, observed::tSlotNumber{chassis, slot}, kSlotAttributes}};
  for (const varmex::ModuleAttempt& attempt : session.eachModule()) {
    if (!attempt.module || attempt.module->place() != text) continue;
    if (attempt.module->addresses.empty()) break;  // a controller of which only the slot tells
    const varmex::PciAddress& first = attempt.module->addresses.front();
    subjects.push_back(deviceAt({first.bus, first.device, first.function}));
    break;
  }
  return subjects;
}

tAsked askedOf(const observed::tPlace& place) {
  if (const auto* const chassis = std::get_if<observed::tChassisNumber>(&place)) {
    return {chassis->chassis};
  }
  if (const auto* const slot = std::get_if<observed::tSlotNumber>(&place)) {
    return {slot->chassis, slot->slot};
  }
  if (const auto* const bridge = std::get_if<observed::tBridgeNumber>(&place)) {
    return {bridge->chassis, std::nullopt, bridge->bridge};
  }
  return {};
}

// As show --json names what belongs to no item of the description.
constexpr const char* kMachine = "machine";

// "1", "1/7", "1/bridge/2", a PCI address, the name of a module, or "machine".
tSubjects parseSubjects(const varmex::Session& session, const std::string& text) {
  constexpr const char* kBridge = "/bridge/";
  if (const std::size_t bridge = text.find(kBridge); bridge != std::string::npos) {
    const tPlace place = parsePlace(std::string(text).replace(bridge, std::strlen(kBridge), "/"));
    return {{"bridge " + text, observed::tBridgeNumber{*place.chassis, *place.slot},
             kBridgeAttributes}};
  }
  if (text.find_first_not_of("0123456789/") == std::string::npos) {
    const tPlace place = parsePlace(text);
    if (place.slot) return slotAndModule(session, *place.chassis, *place.slot);
    return {{"chassis " + text, observed::tChassisNumber{*place.chassis}, kChassisAttributes}};
  }
  if (const auto address = addressIn(text)) return {deviceAt(*address)};
  if (text == kMachine) return {{text, observed::tWholeDescription{}, kSessionAttributes}};
  const varmex::Module module = moduleCalled(session, text);
  return slotAndModule(session, module.chassisNumber, module.slotNumber);
}

// By its name, or by that of its constant.
bool isCalled(const tAttribute& attribute, const std::string& name) {
  const std::string prefix = attribute.isText ? "varmex_str_" : "varmex_u32_";
  return name == attribute.name || name == prefix + attribute.name;
}

// Leaves that attribute alone, of the first item that has it.
void keepAttribute(tSubjects& subjects, const std::string& name) {
  std::string names;
  for (tSubject& subject : subjects) {
    for (const tAttribute& attribute : subject.attributes) {
      if (isCalled(attribute, name)) {
        subjects = {{subject.name, subject.place, {attribute}}};
        return;
      }
      names += (names.empty() ? "" : ", ") + std::string(attribute.name);
    }
  }
  throw CLI::ValidationError("attribute", "there is no " + name + " here, but " + names);
}

// In the place of a file where the registry is no text.
constexpr const char* kRegistry = "registry";

const char* wordOf(observed::tWhat what) {
  switch (what) {
    case observed::tWhat::section: return "section";
    case observed::tWhat::item: return "item";
    case observed::tWhat::key: return "key";
    case observed::tWhat::value: return "value";
    case observed::tWhat::subkey: return "subkey";
  }
  return "";
}

// "[Chassis1Slot9] SlotType = "PXIePeripheralSlot"", as much of it as there is.
std::string lookUpText(const tJson& reading) {
  const std::string section = reading.value("section", "");
  const std::string item = reading.value("item", "");
  std::string text = joined({section.empty() ? "" : '[' + section + ']', item}, " ");
  if (reading.contains("text")) return text + " = \"" + reading["text"].get<std::string>() + '"';
  if (reading["isThere"]) return text;
  return text + (item.empty() ? " " : ": ") +
         (section.empty() ? "absent with its section" : "absent");
}

// Files by their names alone, as findings have them.
std::string positionText(const tJson& reading) {
  const std::string path = reading["file"].get<std::string>();
  const std::string file = path.substr(path.find_last_of("/\\") + 1);
  return reading.contains("line") ? file + ':' + reading["line"].dump() : file;
}

void showReadings(const tJson& readings) {
  std::vector<tRow> rows;
  for (const tJson& reading : readings) {
    rows.push_back({std::to_string(rows.size() + 1), positionText(reading), lookUpText(reading)});
  }
  if (!rows.empty()) showTable({"", "Line", "Looked up"}, rows, std::cout);
}

// The map of devices was made of the slots of all chassis. For people the many that do not have the
// device are left out.
void showMap(const tJson& readings, const std::string& section) {
  tJson own = tJson::array();
  std::copy_if(readings.begin(), readings.end(), std::back_inserter(own), [&](const tJson& one) {
    const std::string name = one.value("section", "");
    if (!name.starts_with(section)) return false;
    const char behind = name[section.size()];  // a digit where it is another slot's
    return behind < '0' || behind > '9';
  });
  showParagraph("  ",
                "It was found among all devices of both files, which took " +
                    std::to_string(readings.size()) +
                    " look-ups (--json); those of its own slot are",
                std::cout);
  showReadings(own);
}

std::string answerText(const tJson& answer) {
  if (answer.contains("value")) {
    const tJson& value = answer["value"];
    return value.is_string() ? '"' + value.get<std::string>() + '"' : value.dump();
  }
  const tJson& failure = answer["failure"];
  return failureText(failure["constant"].get<std::string>(), failure["code"].get<std::int32_t>(),
                     failure["sentence"].get<std::string>());
}

class tExplain : public tCommand {
 public:
  tExplain() : tCommand("explain", "Tell which items of the files an answer was made of") {}

  void addOptions(CLI::App& line) override {
    line.add_option(
            "place", place_,
            "A chassis (1), slot (1/7), trigger bridge (1/bridge/2), the PCI address of a module "
            "(33.15.0 or 21:0f.0), its alias or resource name, or machine for versions and paths")
        ->required()
        ->check([](const std::string& text) { return text.empty() ? "it is empty" : ""; });
    line.add_option("attribute", attribute_,
                    "The attribute, as show --json has it (SlotType), or its constant "
                    "(varmex_u32_SlotType); all without it");
    line.add_flag("--json", asJson_, "Print JSON");
    installation_.addFrom(line);
  }

  tExitStatus run() override {
    const varmex::Session session = installation_.open();
    const bool isText = !registryTextPath().empty() && installation_.saved() == nullptr;
    files_ = {withShownPaths(session.pxiSysPath()), withShownPaths(session.pxieSysPath()),
              isText ? registryTextPath() : kRegistry};
    tSubjects subjects = parseSubjects(session, place_);
    if (!attribute_.empty()) keepAttribute(subjects, attribute_);
    tJson document = {{"schemaVersion", kSchemaVersion}, {"items", tJson::array()}};
    for (const tSubject& subject : subjects) document["items"].push_back(explain(subject));
    if (asJson_) {
      printJson(document);
    } else {
      show(document["items"]);
    }
    return document["items"].front()["opening"].contains("failure") ? kFailed : kDone;
  }

 private:
  // Each attribute of an item that was opened for it, so that all that is read for it is told.
  tJson explain(const tSubject& subject) const {
    tJson document = {{"item", subject.name}};
    document["opening"] = tJson::object();
    document["attributes"] = tJson::array();
    for (const tAttribute& attribute : subject.attributes) {
      observed::tReadings readings;
      varmex::Status status;
      const tLockNotice notice;
      const observed::tItem item(subject.place, readings, *static_cast<tStatusRecord*>(status));
      document["opening"]["readings"] = listOf(readings);
      if (status.code() < 0) {
        document["opening"]["failure"] = jsonOf(reasonOf(status.error(), askedOf(subject.place)));
        return document;
      }
      if (std::holds_alternative<tDeviceAddress>(subject.place)) {
        document["opening"]["section"] = sectionOf(item);
      }
      tAsked asked = askedOf(subject.place);
      asked.line = lineOf(attribute.number);
      document["attributes"].push_back(answerOf(item, attribute, asked));
    }
    return document;
  }

  static std::string sectionOf(const observed::tItem& device) {
    const auto number = [&](std::uint32_t attribute) {
      observed::tReadings readings;
      varmex::Status status;
      const auto value =
          device.ask(attribute, false, readings, *static_cast<tStatusRecord*>(status));
      status.check();
      return std::to_string(std::get<std::uint32_t>(*value));
    };
    return "Chassis" + number(varmex_u32_ChassisNumber) + "Slot" + number(varmex_u32_SlotNumber);
  }

  tJson answerOf(const observed::tItem& item, const tAttribute& attribute,
                 const tAsked& asked) const {
    tJson answer = {{"name", attribute.name}};
    observed::tReadings readings;
    varmex::Status status;
    try {
      const auto value = item.ask(attribute.number, attribute.isText, readings,
                                  *static_cast<tStatusRecord*>(status));
      status.check();
      std::visit([&](const auto& is) { answer["value"] = shown(is); }, *value);
    } catch (const std::exception& failure) {
      answer["failure"] = jsonOf(reasonOf(failure, asked));
    }
    answer["readings"] = listOf(readings);
    return answer;
  }

  static std::uint32_t shown(std::uint32_t number) { return number; }
  static std::string shown(const std::string& text) { return withShownPaths(text); }

  // In the order in which they were made.
  tJson listOf(const observed::tReadings& readings) const {
    tJson list = tJson::array();
    for (const observed::tReading& reading : readings) {
      const std::string& file = files_[static_cast<std::size_t>(reading.source)];
      tJson json = {{"file", file}, {"kind", wordOf(reading.what)}};
      // A saved file has the values alone, which a text was made of for this process.
      if (reading.line > 0 && file != kRegistry) json["line"] = reading.line;
      if (!reading.section.empty()) json["section"] = reading.section;
      if (!reading.item.empty()) json["item"] = reading.item;
      json["isThere"] = reading.text.has_value();
      const bool hasText =
          reading.what == observed::tWhat::item || reading.what == observed::tWhat::value;
      if (reading.text && hasText) json["text"] = *reading.text;
      list.push_back(std::move(json));
    }
    return list;
  }

  static void show(const tJson& items) {
    for (const tJson& item : items) {
      if (&item != &items.front()) std::cout << '\n';
      showOpening(item);
      for (const tJson& answer : item["attributes"]) {
        std::cout << '\n';
        const char* const is = answer.contains("value") ? " = " : ": ";
        const std::string name = answer["name"];
        showParagraph("", visible(name + is + answerText(answer)), std::cout);
        showReadings(answer["readings"]);
        if (answer["readings"].empty()) std::cout << "  Nothing was read beyond the opening.\n";
      }
    }
  }

  static void showOpening(const tJson& item) {
    const tJson& opening = item["opening"];
    const std::string name = item["item"];
    std::cout << "Opening " << name << '\n';
    if (opening.contains("failure")) {
      showParagraph("", visible(answerText(opening)), std::cout);
    }
    if (opening.contains("section")) {
      showMap(opening["readings"], opening["section"]);
    } else {
      showReadings(opening["readings"]);
    }
  }

  tInstallation installation_;
  std::string place_;
  std::string attribute_;
  bool asJson_ = false;
  std::vector<std::string> files_;  // by tSource
};

}  // namespace

tCommandPtr makeExplain() { return std::make_unique<tExplain>(); }

}  // namespace tool
