#include <algorithm>
#include <cstring>
#include <iostream>

#include "source/observed/observed.h"
#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/attributes.h"
#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/lockNotice.h"
#include "tools/varmex/describe/place.h"
#include "tools/varmex/describe/reason.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/output.h"
#include "tools/varmex/text/shownPaths.h"
#include "tools/varmex/text/table.h"

namespace tool {

namespace {

struct tSubject {
  observed::tPlace place;
  const tAttributes* attributes;
};

// "1", "1/7", "1/bridge/2", or a PCI address.
tSubject parseSubject(const std::string& text) {
  constexpr const char* kBridge = "/bridge/";
  if (text.find_first_of(".:") != std::string::npos) {
    const tPciAddress address = parseAddress(text);
    return {tDeviceAddress{0, address.bus, address.device, address.function}, &kDeviceAttributes};
  }
  const std::size_t bridge = text.find(kBridge);
  const tPlace place = parsePlace(
      bridge == std::string::npos ? text
                                  : std::string(text).replace(bridge, std::strlen(kBridge), "/"));
  if (!place.chassis) throw CLI::ValidationError("place", "it is empty");
  if (!place.slot) return {observed::tChassisNumber{*place.chassis}, &kChassisAttributes};
  if (bridge == std::string::npos) {
    return {observed::tSlotNumber{*place.chassis, *place.slot}, &kSlotAttributes};
  }
  return {observed::tBridgeNumber{*place.chassis, *place.slot}, &kBridgeAttributes};
}

// By its name, or by that of its constant.
const tAttribute& findAttribute(const tAttributes& attributes, const std::string& name) {
  const auto found = std::find_if(attributes.begin(), attributes.end(), [&](const tAttribute& one) {
    const std::string constant =
        (one.isText ? "varmex_str_" : "varmex_u32_") + std::string(one.name);
    return name == one.name || name == constant;
  });
  if (found != attributes.end()) return *found;
  std::string names;
  for (const tAttribute& one : attributes)
    names += (names.empty() ? "" : ", ") + std::string(one.name);
  throw CLI::ValidationError("attribute", "there is no " + name + " here, but " + names);
}

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

tJson jsonOf(const tReason& reason) {
  return {{"code", reason.code},
          {"constant", reason.constant},
          {"detail", reason.detail},
          {"sentence", reason.sentence}};
}

tRow rowOf(const tJson& reading) {
  const std::string file = reading["file"].get<std::string>();
  const bool isThere = reading["isThere"];
  const std::string section = reading.value("section", "");
  const bool hasText = reading.contains("text");
  return {reading.contains("line") ? file + ':' + reading["line"].dump() : file,
          section.empty() ? "" : '[' + section + ']', reading.value("item", ""),
          !isThere  ? "absent"
          : hasText ? '"' + reading["text"].get<std::string>() + '"'
                    : "there"};
}

void showReadings(const tJson& readings) {
  if (readings.empty()) {
    std::cout << "  Nothing was read for it.\n";
    return;
  }
  std::vector<tRow> rows;
  for (const tJson& reading : readings) {
    tRow row = rowOf(reading);
    row.insert(row.begin(), std::to_string(rows.size() + 1));
    rows.push_back(std::move(row));
  }
  showTable({"", "File", "Section", "Item", "Text"}, rows, std::cout);
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
            "A chassis (1), slot (1/7), trigger bridge (1/bridge/2) or the PCI address of a "
            "module (33.15.0 or 21:0f.0)")
        ->required();
    line.add_option("attribute", attribute_,
                    "The attribute, as show --json has it (SlotType), or its constant "
                    "(varmex_u32_SlotType); all without it");
    line.add_flag("--json", asJson_, "Print JSON");
    installation_.addFrom(line);
  }

  tExitStatus run() override {
    const tSubject subject = parseSubject(place_);
    tAttributes attributes = *subject.attributes;
    if (!attribute_.empty()) attributes = {findAttribute(attributes, attribute_)};
    const varmex::Session session = installation_.open();
    files_ = {withShownPaths(session.pxiSysPath()), withShownPaths(session.pxieSysPath()),
              "registry"};
    const tJson document = explain(subject.place, attributes);
    if (asJson_) {
      printJson(document);
    } else {
      show(document);
    }
    return document["opening"].contains("failure") ? kFailed : kDone;
  }

 private:
  tJson explain(const observed::tPlace& place, const tAttributes& attributes) const {
    tJson document = {{"schemaVersion", kSchemaVersion}, {"place", place_}};
    document["opening"] = tJson::object();
    document["attributes"] = tJson::array();
    for (const tAttribute& attribute : attributes) {
      observed::tReadings readings;
      varmex::Status status;
      const tLockNotice notice;
      const observed::tItem item(place, readings, *static_cast<tStatusRecord*>(status));
      document["opening"]["readings"] = listOf(readings);
      if (status.code() < 0) {
        document["opening"]["failure"] = jsonOf(reasonOf(status.error()));
        return document;
      }
      document["attributes"].push_back(answerOf(item, attribute));
    }
    return document;
  }

  tJson answerOf(const observed::tItem& item, const tAttribute& attribute) const {
    tJson answer = {{"name", attribute.name}};
    observed::tReadings readings;
    varmex::Status status;
    try {
      const auto value = item.ask(attribute.number, attribute.isText, readings,
                                  *static_cast<tStatusRecord*>(status));
      status.check();
      std::visit([&](const auto& is) { answer["value"] = is; }, *value);
    } catch (const std::exception& failure) {
      answer["failure"] = jsonOf(reasonOf(failure));
    }
    answer["readings"] = listOf(readings);
    return answer;
  }

  // In the order in which they were made.
  tJson listOf(const observed::tReadings& readings) const {
    tJson list = tJson::array();
    for (const observed::tReading& reading : readings) {
      tJson json = {{"file", files_[static_cast<std::size_t>(reading.source)]},
                    {"kind", wordOf(reading.what)}};
      if (reading.line > 0) json["line"] = reading.line;
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

  void show(const tJson& document) const {
    std::cout << "Opening " << place_ << '\n';
    const tJson& opening = document["opening"];
    if (opening.contains("failure")) std::cout << visible(answerText(opening)) << '\n';
    showReadings(opening["readings"]);
    for (const tJson& answer : document["attributes"]) {
      std::cout << '\n'
                << answer["name"].get<std::string>() << (answer.contains("value") ? " = " : ": ")
                << visible(answerText(answer)) << '\n';
      showReadings(answer["readings"]);
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
