#include "source/varmex/Chassis.h"

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/lexical_cast.hpp>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <optional>
#include <typeinfo>

#include "corpxiTools/fileSystem/folders.h"
#include "corpxiTools/fileSystem/registry.h"
#include "source/varmex/ServicesTreeUtil.h"
#include "source/varmex/errorCodes.h"
#include "source/varmex/nativeTriggerManager.h"

namespace varmex {

namespace {

std::string withoutCommas(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), ','), text.end());
  return text;
}

tRefusal invalidSlotPath(const tSourcePosition& position) {
  return tRefusal(kErrorInformationConflict, position)
      .debug()
      .text("message",
            "The chassis does not have valid slot paths in the system description file.");
}

// The cast alone would take the digit groups of the host's locale.
tResult<std::uint32_t> parseRootBus(const std::string& text) {
  const std::size_t digits = text.starts_with('+') || text.starts_with('-') ? 1 : 0;
  const bool isPlain = text.find_first_not_of("0123456789", digits) == std::string::npos;
  std::uint32_t rootBus = 0;
  if (isPlain && boost::conversion::try_lexical_convert(text, rootBus)) return rootBus;
  return tRefusal(kSoftwareFault, OSTREL_HERE)
      .direct()
      .debug()
      .text("wrappedMessage",
            "bad lexical cast: source type value could not be interpreted as target");
}

// "MR1F:" for root bus 31. More than two digits fit neither the prefix nor any PCI system.
constexpr std::uint32_t kLargestRootBus = 0xFF;

std::string rootBusPrefix(std::uint32_t rootBus) {
  char prefix[6];
  std::snprintf(prefix, sizeof prefix, "MR%02X:", rootBus & kLargestRootBus);
  return prefix;
}

// The path of slot 2 below its root bus: it stays the same wherever the chassis is numbered.
tResult<std::string> slotPathIdentity(const tIniFile& pxiSys, std::uint32_t chassis) {
  const tIniPlace slot = pxiSys.placeOf(slotKey(chassis, 2));
  const auto path = pxiSys.getValueText(slot, "PCISlotPath");
  if (!path) return path.refusal();
  const char* const root = pxiSys.findValueText(slot.found, "PCISlotPathRootBus");
  const auto rootBus = parseRootBus(root ? root : "0");
  if (!rootBus) return rootBus.refusal();
  if (*rootBus > kLargestRootBus) return invalidSlotPath(OSTREL_HERE);
  std::vector<std::string> tokens;
  boost::algorithm::split(tokens, *path, boost::algorithm::is_any_of(","));
  if (tokens.size() < 2) return invalidSlotPath(OSTREL_HERE);
  tokens.erase(tokens.begin());
  return rootBusPrefix(*rootBus) + boost::algorithm::join(tokens, ",");
}

// The text of an item that both files must agree on.
tResult<const char*> mergedItemOf(std::uint32_t chassis, const tSectionPair& sections,
                                  const tDescription& description, tLiteral item) {
  const char* const classic = description.pxiSys.findValueText(sections.classic, item);
  const char* const express = description.pxieSys.findValueText(sections.express, item);
  if (!classic && !express) {
    return tRefusal(kErrorInformationNotAvailable, OSTREL_HERE)
        .debug()
        .text("itemName", item)
        .name("sectionName_", chassisKey(chassis));
  }
  if (classic && express && std::strcmp(classic, express) != 0) {
    return tRefusal(kErrorInformationConflict, OSTREL_HERE)
        .debug()
        .text("itemName", item)
        .name("sectionName_", chassisKey(chassis));
  }
  return classic ? classic : express;
}

tResult<std::string> makeIdentity(std::uint32_t chassis, const tSectionPair& sections,
                                  const tDescription& description) {
  const auto vendorText = mergedItemOf(chassis, sections, description, "Vendor");
  if (!vendorText) return vendorText.refusal();
  const auto modelText = mergedItemOf(chassis, sections, description, "Model");
  if (!modelText) return modelText.refusal();
  const std::string vendor = withoutCommas(*vendorText);
  const std::string model = withoutCommas(*modelText);
  if (sections.express) {
    const auto serial =
        description.pxieSys.getValueText(tIniPlace(*sections.express), "SerialNumber");
    if (!serial) return serial.refusal();
    return "PXIeChassis(" + std::string(*serial) + ", " + vendor + ", " + model + ")";
  }
  const auto path = slotPathIdentity(description.pxiSys, chassis);
  if (!path) return path.refusal();
  return "PXIChassis(" + vendor + ", " + model + ", " + *path + ")";
}

std::optional<std::string> readDescriptionFolder() {
  tStatusRecord unread = makeStatus();
  const tRegistryKey key = openPxiSaKey(unread);
  statusReleaseText(unread);
  if (!key.isOpen()) return std::nullopt;
  char folder[260] = {};
  std::uint32_t type = 0;
  std::uint32_t size = sizeof folder;
  const std::uint32_t error = key.queryValue("ChassisDescriptionFilePath", type, folder, size);
  if (error != 0 || type != kRegistryText) return std::nullopt;
  return std::string(std::begin(folder), std::find(std::begin(folder), std::end(folder), '\0'));
}

// Empty when it can't be worked out, for whatever reason: that shows when the attribute is asked
// for.
std::string findDescriptionFile(const Chassis::tPlace& place) {
  try {
    const auto item =
        mergedItemOf(place.number, place.sections, *place.description, "DescriptionFile");
    if (!item) return {};
    const std::string file = *item;
    if (isFullPath(file)) return file;
    const auto folder = readDescriptionFolder();
    return folder ? appendPath(*folder, file) : std::string();
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace

const tResult<std::string>& identityOf(std::uint32_t number, const tDescription& description) {
  return description.tablesOf(number).identity.get(
      [&] { return makeIdentity(number, description.sections(chassisKey(number)), description); });
}

tResult<Chassis::tPlace> Chassis::find(std::uint32_t number, const tDescription& description) {
  const tSectionPair sections = description.sections(chassisKey(number));
  if (!sections) {
    return tRefusal(kErrorUnknownItem, OSTREL_HERE)
        .debug()
        .name("missingSection", chassisKey(number))
        .close()
        .u32("chassisNumber", number)
        .text("type", "chassis");
  }
  const auto& identity = identityOf(number, description);
  if (!identity) return identity.refusal();
  return tPlace{number, sections, &description, identity->c_str()};
}

Chassis::Chassis(const tPlace& place) : Chassis(tRecord{place, findDescriptionFile(place)}) {}

Chassis::Chassis(tRecord record) : record_(std::move(record)) {}

bool Chassis::isLess(const tRecord& a, const tRecord& b) { return a.place.number < b.place.number; }

tResult<const char*> Chassis::mergedItem(tLiteral item) const {
  return mergedItemOf(number(), sections(), description(), item);
}

tResult<tNumbers> Chassis::mergedNumbers(tLiteral item) const {
  tNumbers numbers;
  for (const tIniSection* const section : {sections().classic, sections().express}) {
    const tIniItem* const list = description().pxiSys.findItem(section, item);
    if (!list) continue;
    const auto done = tIniFile::appendNumbersOf(*section, *list, numbers);
    if (!done) return done.refusal();
  }
  sortWithoutRepeats(numbers);
  return numbers;
}

tResult<const char*> Chassis::serialNumber(std::uint32_t attribute) const {
  if (!sections().express) return attributeNotApplicable(attribute, OSTREL_HERE);
  const char* const serial =
      description().pxieSys.findValueText(sections().express, "SerialNumber");
  if (!serial) return attributeNotAvailable(attribute, OSTREL_HERE);
  return serial;
}

// A chassis without a trigger manager is asked about under the name "None".
tResult<std::uint32_t> Chassis::isTriggerManagerNative() const {
  const auto identifier = mergedItem("TriggerManager");
  if (!identifier && identifier.refusal().code() != varmex_errorInformationNotAvailable) {
    return identifier.refusal();
  }
  const auto model = mergedItem("Model");
  if (!model) return model.refusal();
  const auto vendor = mergedItem("Vendor");
  if (!vendor) return vendor.refusal();
  const auto isNative = isNativeTriggerManager(*vendor, *model, identifier ? *identifier : "None");
  if (!isNative) return isNative.refusal();
  return *isNative ? 1U : 0U;
}

tResult<const char*> Chassis::triggerManagerLibrary() const {
  if (const std::string* const known = triggerManagerLibrary_.find()) return known->c_str();
  const auto identifier = mergedItem("TriggerManager");
  if (!identifier) return identifier.refusal();
  auto library = ServicesTreeUtil::getTriggerManagerLibrary(*identifier);
  if (!library) return library.refusal();
  if (!library->empty()) {
    return triggerManagerLibrary_.get([&] { return std::move(*library); }).c_str();
  }
  return tRefusal(kErrorTriggerManagerLibraryNotFound, OSTREL_HERE)
      .debug()
      .u32("attribute", varmex_str_ChassisTriggerManagerLibrary);
}

tResult<std::uint32_t> Chassis::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_Chassis;
    case varmex_u32_ChassisNumber: return number();
    case varmex_u32_IsTriggerManagerNative: return isTriggerManagerNative();
    default: return attributeNotApplicable(attribute, OSTREL_HERE);
  }
}

tResult<const char*> Chassis::getStringAttribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_str_ChassisVendor: return mergedItem("Vendor");
    case varmex_str_ChassisModel: return mergedItem("Model");
    case varmex_str_ChassisTriggerManagerIdentifier: return mergedItem("TriggerManager");
    case varmex_str_ChassisTriggerManagerLibrary: return triggerManagerLibrary();
    case varmex_str_ChassisSerialNumber: return serialNumber(attribute);
    case varmex_str_ChassisIdentity: return record_.place.identity;
    case varmex_str_ChassisDescriptionFile:
      if (record_.descriptionFile.empty()) return attributeNotAvailable(attribute, OSTREL_HERE);
      return record_.descriptionFile.c_str();
    case varmex_str_ChassisTriggerBusList: return mergedItem("TriggerBusList");
    default: return attributeNotApplicable(attribute, OSTREL_HERE);
  }
}

tResult<std::unique_ptr<Item>> Chassis::clone() const {
  auto copy = std::make_unique<Chassis>(record_);
  if (const std::string* const known = triggerManagerLibrary_.find()) {
    copy->triggerManagerLibrary_.get([known] { return *known; });
  }
  return copy;
}

tResult<std::unique_ptr<Item>> Chassis::openContainingItem(std::uint32_t) const {
  return tRefusal(kErrorInvalidParameter, OSTREL_HERE)
      .debug()
      .text("message", "You cannot get the containing item for a chassis");
}

bool Chassis::lessThan(const Item& other) const {
  if (other.kind() != kKind) return kKind < other.kind();
  return isLess(record_, static_cast<const Chassis&>(other).record_);
}

tResult<std::unique_ptr<Item>> openChassisOrAbove(std::uint32_t kind, std::uint32_t chassisNumber,
                                                  const tDescription& description) {
  const auto place = Chassis::find(chassisNumber, description);
  if (!place) return place.refusal();
  auto chassis = std::make_unique<Chassis>(*place);
  if (kind != varmex_itemType_Chassis) return chassis->openContainingItem(kind);
  return chassis;
}

}  // namespace varmex
