#include "tools/varmex/describe/modules.h"

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <iostream>

#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/listing.h"
#include "tools/varmex/describe/reason.h"
#include "tools/varmex/describe/words.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/table.h"

namespace tool {

namespace {

class tModuleDescriber {
 public:
  explicit tModuleDescriber(const varmex::Session& session) : session_(session) {}

  tJson run() {
    tJson document = {{"schemaVersion", kSchemaVersion}, {"modules", tJson::array()}};
    tJson& modules = document["modules"];
    try {
      const auto numbers = [&](const varmex::Error&) { return listing().chassis(); };
      for (const auto& chassis : session_.eachChassis(numbers)) addChassis(chassis, modules);
    } catch (const std::exception& failure) {
      addFailure(modules.emplace_back(tJson::object()), "opening", reasonOf(failure));
    }
    document["failureCount"] = failureCount_;
    return document;
  }

 private:
  void addChassis(const varmex::Attempt<varmex::Chassis>& chassis, tJson& modules) {
    const auto addUnopened = [&](const tReason& reason) {
      modules.push_back({{"chassis", chassis.number}});
      addFailure(modules.back(), "opening", reason);
    };
    if (chassis.error) return addUnopened(reasonOf(*chassis.error, {chassis.number}));
    try {
      const auto numbers = [&](const varmex::Error&) { return listing().slots(chassis.number); };
      for (const auto& attempt : chassis.item->eachModule(numbers)) add(attempt, modules);
    } catch (const std::exception& failure) {
      addUnopened(reasonOf(failure));
    }
  }

  void add(const varmex::ModuleAttempt& attempt, tJson& modules) {
    if (attempt.module) return modules.push_back(describe(*attempt.module));
    modules.push_back({{"place", std::to_string(attempt.chassisNumber) + '/' +
                                     std::to_string(attempt.slotNumber.value_or(0))},
                       {"chassis", attempt.chassisNumber},
                       {"slot", attempt.slotNumber.value_or(0)}});
    addFailure(modules.back(), "opening",
               reasonOf(*attempt.error, {attempt.chassisNumber, attempt.slotNumber}));
  }

  tJson describe(const varmex::Module& module) {
    tJson json = {{"place", module.place()},   {"chassis", module.chassisNumber},
                  {"slot", module.slotNumber}, {"slots", module.slots},
                  {"name", module.name},       {"addresses", tJson::array()}};
    for (const varmex::PciAddress& address : module.addresses) {
      json["addresses"].push_back(address.text());
    }
    json["resources"] = module.resourceNames;
    addText(json, "alias", module.alias);
    addText(json, "vendor", module.vendor);
    addText(json, "model", module.model);
    addNumber(json, "width", module.linkWidth);
    addNumber(json, "possibleWidth", module.possibleLinkWidth());
    addNumber(json, "moduleWidth", module.linkWidthMax);
    addNumber(json, "slotWidth", module.slotLinkWidth);
    json["reduced"] = module.isLinkReduced();
    addText(json, "serial", module.chassisSerialNumber);
    addText(json, "identity", module.chassisIdentity);
    if (!module.functions.empty()) addUnreadWidths(module, json);
    return json;
  }

  // A width that is written and can't be read is a fault, other than one that is absent.
  void addUnreadWidths(const varmex::Module& module, tJson& json) {
    const varmex::Device& device = module.functions.front();
    if (!module.linkWidth) {
      addUnread(json, "width", device, varmex_u32_PeripheralModuleLinkWidthNegotiated);
    }
    if (!module.linkWidthMax) {
      addUnread(json, "moduleWidth", device, varmex_u32_PeripheralModuleLinkWidthMax);
    }
    if (!module.slotLinkWidth) {
      addUnread(json, "slotWidth", device.slot(), varmex_u32_PeripheralSlotLinkWidth1);
    }
  }

  void addUnread(tJson& json, const char* key, const varmex::ItemBase& item,
                 std::uint32_t attribute) {
    varmex::Status status;
    varmex_getU32Attribute(item.handle(), attribute, status);
    if (status.code() < 0 && !isAbsence(status, {key, attribute, false, nullptr})) {
      addFailure(json, key, reasonOf(status.error(), askedOf(item, attribute)));
    }
  }

  static void addText(tJson& json, const char* key, const std::string& text) {
    if (!text.empty()) json[key] = text;
  }

  static void addNumber(tJson& json, const char* key, const std::optional<std::uint32_t>& number) {
    if (number) json[key] = *number;
  }

  void addFailure(tJson& json, const char* about, const tReason& reason) {
    json["failures"][about] = jsonOf(reason);
    ++failureCount_;
  }

  // The description is read at the first need, which a healthy one never has.
  const tListing& listing() {
    if (!listing_) listing_.emplace(session_);
    return *listing_;
  }

  const varmex::Session& session_;
  std::size_t failureCount_ = 0;
  std::optional<tListing> listing_;
};

std::string addressText(const std::string& address, tPciNotation notation) {
  return textOf(parseAddress(address), notation);
}

std::string addressesText(const tJson& module, tPciNotation notation) {
  std::vector<std::string> addresses;
  if (module.contains("addresses")) {
    for (const tJson& each : module["addresses"]) addresses.push_back(addressText(each, notation));
  }
  return joined(addresses, " ");
}

std::string firstAddressText(const tJson& module, tPciNotation notation) {
  const std::string all = addressesText(module, notation);
  return all.substr(0, all.find(' '));
}

// Vendor, model and alias; the name where there is none of these.
std::string titleText(const tJson& module, tPciNotation) {
  const std::string alias = textOf(module, "alias");
  const std::string title = joined({textOf(module, "vendor"), textOf(module, "model"),
                                    alias.empty() ? alias : '"' + alias + '"'},
                                   " ");
  const std::string mark = markOf(module, "opening");
  if (!mark.empty()) return mark + " can't be read";
  return title.empty() ? textOf(module, "name") : title;
}

std::string linkText(const tJson& module, tPciNotation) {
  tLink link{numberOf(module, "width"), numberOf(module, "possibleWidth"), markOf(module, "width"),
             markOf(module, "slotWidth")};
  if (link.possibleMark.empty()) link.possibleMark = markOf(module, "moduleWidth");
  return link.now || !link.nowMark.empty() ? linkTextOf(link) : "";
}

std::string placeText(const tJson& module, tPciNotation) {
  const std::string place = textOf(module, "place");
  return place.empty() ? textOf(module, "chassis") : place;
}

// The columns whose texts are not the values of the document as they stand there.
struct tMaking {
  const char* key;
  std::string (*make)(const tJson& module, tPciNotation notation);
};
constexpr tMaking kMakings[] = {{"place", placeText},
                                {"address", firstAddressText},
                                {"addresses", addressesText},
                                {"module", titleText},
                                {"link", linkText}};

std::string valueText(const tJson& value) {
  if (value.is_boolean()) return value.get<bool>() ? "1" : "0";
  if (value.is_string()) return value.get<std::string>();
  return value.dump();
}

}  // namespace

tJson describeModules(const varmex::Session& session) { return tModuleDescriber(session).run(); }

tJson describeUnreadModules(const std::exception& failure) {
  return {{"schemaVersion", kSchemaVersion},
          {"modules", {{{"failures", {{"opening", jsonOf(reasonOf(failure))}}}}}},
          {"failureCount", 1}};
}

tJson describeModulesOrFailure(const tInstallation& installation) {
  try {
    return describeModules(installation.open());
  } catch (const std::exception& failure) {
    tellFailure(failure);
    return describeUnreadModules(failure);
  }
}

varmex::Module moduleCalled(const varmex::Session& session, const std::string& name) {
  const auto address = addressIn(name);
  const std::string wanted = address ? textOf(*address, tPciNotation::decimal) : name;
  std::vector<varmex::Module> byAlias;
  std::vector<varmex::Module> byOther;
  bool isWhole = true;
  for (varmex::ModuleAttempt& attempt : session.eachModule()) {
    isWhole = isWhole && attempt.module;
    if (!attempt.module || !attempt.module->isCalled(wanted)) continue;
    const bool isAlias = boost::iequals(attempt.module->alias, wanted);
    (isAlias ? byAlias : byOther).push_back(std::move(*attempt.module));
  }
  const std::vector<varmex::Module>& found = byAlias.empty() ? byOther : byAlias;
  if (found.size() == 1) return found.front();
  if (found.empty()) {
    requireDescription();
    throw std::runtime_error("there is no module \"" + name + '"' +
                             (isWhole ? "; \"varmex list\" names those that there are"
                                      : " among those that can be read; \"varmex check\" "
                                        "tells what to mend of the others"));
  }
  std::vector<std::string> places;
  for (const varmex::Module& module : found) places.push_back(module.place());
  throw std::runtime_error('"' + name + "\" is " + std::to_string(found.size()) +
                           " modules; say which by its place: " + joined(places, ", "));
}

const std::vector<tModuleColumn> kModuleColumns = {
    {"place", "Slot", "chassis and slot: 1/9"},
    {"chassis", "Chassis", "number of the chassis"},
    {"slot", "Slot", "number of the slot"},
    {"slots", "Slots", "all slots that the module covers, between commas"},
    {"name", "Name", "PXI1Slot9"},
    {"address", "PCI", "PCI address of the first function"},
    {"addresses", "PCI", "PCI addresses of all functions, between blanks"},
    {"resources", "Resources", "resource names, between commas"},
    {"module", "Module", "vendor, model and alias in one"},
    {"alias", "Alias", "the user's name for it"},
    {"vendor", "Vendor", "maker"},
    {"model", "Model", "model"},
    {"link", "Link", "lanes now of what module and slot can: x1/4 reduced"},
    {"width", "Lanes", "lanes now"},
    {"possibleWidth", "Possible", "lanes that both module and slot can"},
    {"moduleWidth", "Module can", "lanes that the module can"},
    {"slotWidth", "Slot can", "lanes that the slot has"},
    {"reduced", "Reduced", "1 when it runs below what both can, else 0"},
    {"serial", "Serial number", "serial number of the chassis"},
    {"identity", "Chassis identity", "the chassis, wherever it is numbered"},
    {"from", "From", "with many --from: the file or folder that it was read from"}};

tModuleColumns moduleColumns(const std::vector<std::string>& keys) {
  tModuleColumns columns;
  for (const std::string& key : keys) {
    const auto column = std::find_if(kModuleColumns.begin(), kModuleColumns.end(),
                                     [&](const tModuleColumn& each) { return key == each.key; });
    if (column == kModuleColumns.end()) {
      throw CLI::ValidationError("--columns", "there is no column \"" + key + '"');
    }
    columns.push_back(&*column);
  }
  return columns;
}

std::string textOf(const tJson& module, const tModuleColumn& column, tPciNotation notation) {
  const std::string_view key = column.key;
  for (const tMaking& making : kMakings) {
    if (key == making.key) return making.make(module, notation);
  }
  const auto value = module.find(key);
  if (value == module.end()) return markOf(module, column.key);
  if (!value->is_array()) return valueText(*value);
  std::vector<std::string> parts;
  for (const tJson& each : *value) parts.push_back(valueText(each));
  return joined(parts, ",");
}

namespace {

tRow rowOf(const tJson& module, const tModuleColumns& columns, tPciNotation notation) {
  tRow row;
  for (const tModuleColumn* const column : columns) {
    row.push_back(textOf(module, *column, notation));
  }
  return row;
}

// What is long and the same for many modules in a row stands beside the first of them alone.
void dropRepeated(const tModuleColumns& columns, std::vector<tRow>& rows) {
  for (std::size_t column = 0; column < columns.size(); ++column) {
    const std::string_view key = columns[column]->key;
    if (key != "identity" && key != "from") continue;
    std::string last;
    for (tRow& row : rows) {
      if (row[column] == last)
        row[column].clear();
      else
        last = row[column];
    }
  }
}

}  // namespace

void showModules(tJson& document, const tModuleColumns& columns, tPciNotation notation) {
  markFaults(document);
  tRow titles;
  for (const tModuleColumn* const column : columns) {
    const bool isAddress = std::string_view(column->title) == "PCI";
    titles.emplace_back(isAddress ? titleOf(notation) : column->title);
  }
  std::vector<tRow> rows;
  for (const tJson& module : document["modules"]) {
    rows.push_back(rowOf(module, columns, notation));
  }
  dropRepeated(columns, rows);
  if (!rows.empty()) showTable(titles, rows, std::cout);
  showFaults(document, std::cout);
}

}  // namespace tool
