#include "source/varmex/Chassis.h"

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/lexical_cast.hpp>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <mutex>
#include <tuple>
#include <typeinfo>

#include "corpxiTools/fileSystem/folders.h"
#include "corpxiTools/fileSystem/registry.h"
#include "ostrel/quarks/throwingStatus.h"
#include "sevrin/iDataTreeManager.h"
#include "source/varmex/ServicesTreeUtil.h"
#include "source/varmex/errorCodes.h"
#include "source/varmex/nativeTriggerManager.h"

namespace varmex {

namespace {

std::string withoutCommas(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), ','), text.end());
  return text;
}

[[noreturn]] void raiseInvalidSlotPath(const tSourcePosition& position) {
  tFailure(kErrorInformationConflict, position)
      .debug()
      .text("message", "The chassis does not have valid slot paths in the system description file.")
      .raise();
}

// "MR1F:" for root bus 31. More than two digits fit neither the prefix nor any PCI system.
std::string rootBusPrefix(std::uint32_t rootBus) {
  char prefix[6];
  const int length = std::snprintf(prefix, sizeof prefix, "MR%02X:", rootBus);
  if (length >= static_cast<int>(sizeof prefix)) raiseInvalidSlotPath(OSTREL_HERE);
  return prefix;
}

// The cast alone would take the digit groups of the host's locale.
std::uint32_t parseRootBus(const std::string& text) {
  const std::size_t digits = text.starts_with('+') || text.starts_with('-') ? 1 : 0;
  if (text.find_first_not_of("0123456789", digits) != std::string::npos) {
    throw boost::bad_lexical_cast(typeid(std::string), typeid(std::uint32_t));
  }
  return boost::lexical_cast<std::uint32_t>(text);
}

// The path of slot 2 below its root bus: it stays the same wherever the chassis is numbered.
std::string slotPathIdentity(const tIniFile& pxiSys, const std::string& slotSection) {
  const char* const path = pxiSys.getValueText(slotSection, "PCISlotPath");
  const bool hasRoot = pxiSys.hasItem(slotSection, "PCISlotPathRootBus");
  const char* const root = hasRoot ? pxiSys.getValueText(slotSection, "PCISlotPathRootBus") : "0";
  const std::string prefix = rootBusPrefix(parseRootBus(root));
  std::vector<std::string> tokens;
  boost::algorithm::split(tokens, path, boost::algorithm::is_any_of(","));
  if (tokens.size() < 2) raiseInvalidSlotPath(OSTREL_HERE);
  tokens.erase(tokens.begin());
  return prefix + boost::algorithm::join(tokens, ",");
}

std::string readDescriptionFolder() {
  tStatusRecord unread = makeStatus();
  const tRegistryKey key = openPxiSaKey(unread);
  statusReleaseText(unread);
  if (!key.isOpen()) {
    throw RegistryException(
        "WARNING: openKey failed (likely because the requested key file does not exist).");
  }
  char folder[260] = {};
  std::uint32_t type = 0;
  std::uint32_t size = sizeof folder;
  const std::uint32_t error = key.queryValue("ChassisDescriptionFilePath", type, folder, size);
  if (error != 0 || type != kRegistryText) {
    throw RegistryException("WARNING: readString could not retrieve requested value.");
  }
  return {std::begin(folder), std::find(std::begin(folder), std::end(folder), '\0')};
}

}  // namespace

Chassis::Chassis(const tFields& fields)
    : fields_(fields), libraryLock_(tThrowingStatus<tFixedStatus>()) {}

Chassis::Chassis(std::uint32_t number, const tDescription& description)
    : Chassis(tFields{number, &description, chassisKey(number), {}, {}}) {
  fields_.identity = makeIdentity();
  fields_.descriptionFile = findDescriptionFile();
}

const char* Chassis::mergedItem(const char* item) const {
  const auto [pxiSys, pxieSys] = std::tie(description().pxiSys, description().pxieSys);
  const char* const classic = pxiSys.findValueText(fields_.section, item);
  const char* const express = pxieSys.findValueText(fields_.section, item);
  if (!classic && !express) {
    tFailure(kErrorInformationNotAvailable, OSTREL_HERE)
        .debug()
        .text("itemName", item)
        .text("sectionName_", fields_.section)
        .raise();
  }
  if (classic && express && std::strcmp(classic, express) != 0) {
    tFailure(kErrorInformationConflict, OSTREL_HERE)
        .debug()
        .text("itemName", item)
        .text("sectionName_", fields_.section)
        .raise();
  }
  return classic ? classic : express;
}

std::vector<std::uint32_t> Chassis::mergedNumbers(const char* item) const {
  const auto numbersOf = [&](const tIniFile& file) {
    return file.hasItem(fields_.section, item) ? file.getNumberList(fields_.section, item)
                                               : std::vector<std::uint32_t>();
  };
  auto numbers = numbersOf(description().pxiSys);
  return sortedUnion(std::move(numbers), numbersOf(description().pxieSys));
}

std::string Chassis::makeIdentity() const {
  const bool isExpress = description().pxieSys.hasSection(fields_.section);
  if (!isExpress && !description().pxiSys.hasSection(fields_.section)) {
    tFailure(kErrorUnknownItem, OSTREL_HERE)
        .debug()
        .text("missingSection", fields_.section)
        .close()
        .u32("chassisNumber", fields_.number)
        .text("type", "chassis")
        .raise();
  }
  const std::string vendor = withoutCommas(mergedItem("Vendor"));
  const std::string model = withoutCommas(mergedItem("Model"));
  if (isExpress) {
    const char* const serial = description().pxieSys.getValueText(fields_.section, "SerialNumber");
    return "PXIeChassis(" + std::string(serial) + ", " + vendor + ", " + model + ")";
  }
  const std::string path = slotPathIdentity(description().pxiSys, fields_.section + "Slot2");
  return "PXIChassis(" + vendor + ", " + model + ", " + path + ")";
}

std::string Chassis::findDescriptionFile() const {
  try {
    const std::string file = mergedItem("DescriptionFile");
    return isFullPath(file) ? file : appendPath(readDescriptionFolder(), file);
  } catch (const std::exception&) {
    return {};  // shows when the attribute is asked for
  }
}

const char* Chassis::serialNumber(std::uint32_t attribute) const {
  const tIniFile& pxieSys = description().pxieSys;
  if (!pxieSys.hasSection(fields_.section)) raiseAttributeNotApplicable(attribute, OSTREL_HERE);
  if (!pxieSys.hasItem(fields_.section, "SerialNumber")) {
    raiseAttributeNotAvailable(attribute, OSTREL_HERE);
  }
  return pxieSys.getValueText(fields_.section, "SerialNumber");
}

// A chassis without a trigger manager is asked about under the name "None".
std::uint32_t Chassis::isTriggerManagerNative() const {
  const char* identifier = "None";
  try {
    identifier = getStringAttribute(varmex_str_ChassisTriggerManagerIdentifier);
  } catch (const corerr::ExceptionBase& exception) {
    if (exception.record().code != varmex_errorInformationNotAvailable) throw;
  }
  const char* const model = getStringAttribute(varmex_str_ChassisModel);
  const char* const vendor = getStringAttribute(varmex_str_ChassisVendor);
  return isNativeTriggerManager(vendor, model, identifier) ? 1 : 0;
}

const char* Chassis::triggerManagerLibrary() const {
  const std::lock_guard<tCriticalSection> held(libraryLock_);
  if (!triggerManagerLibrary_.empty()) return triggerManagerLibrary_.c_str();
  const char* const identifier = getStringAttribute(varmex_str_ChassisTriggerManagerIdentifier);
  try {
    triggerManagerLibrary_ = ServicesTreeUtil::getTriggerManagerLibrary(identifier);
  } catch (const corerr::Exception& exception) {
    const std::int32_t code = exception.record().code;
    const bool meansNone = code == kStatusFileOpenFault.value ||
                           code == kStatusAttributeNotFound.value ||
                           code == kStatusChildNotFound.value;
    if (!meansNone) throw;
  }
  if (triggerManagerLibrary_.empty()) {
    tFailure(kErrorTriggerManagerLibraryNotFound, OSTREL_HERE)
        .debug()
        .u32("attribute", varmex_str_ChassisTriggerManagerLibrary)
        .raise();
  }
  return triggerManagerLibrary_.c_str();
}

std::uint32_t Chassis::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_Chassis;
    case varmex_u32_ChassisNumber: return fields_.number;
    case varmex_u32_IsTriggerManagerNative: return isTriggerManagerNative();
    default: raiseAttributeNotApplicable(attribute, OSTREL_HERE);
  }
}

const char* Chassis::getStringAttribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_str_ChassisVendor: return mergedItem("Vendor");
    case varmex_str_ChassisModel: return mergedItem("Model");
    case varmex_str_ChassisTriggerManagerIdentifier: return mergedItem("TriggerManager");
    case varmex_str_ChassisTriggerManagerLibrary: return triggerManagerLibrary();
    case varmex_str_ChassisSerialNumber: return serialNumber(attribute);
    case varmex_str_ChassisIdentity: return fields_.identity.c_str();
    case varmex_str_ChassisDescriptionFile:
      if (fields_.descriptionFile.empty()) raiseAttributeNotAvailable(attribute, OSTREL_HERE);
      return fields_.descriptionFile.c_str();
    case varmex_str_ChassisTriggerBusList: return mergedItem("TriggerBusList");
    default: raiseAttributeNotApplicable(attribute, OSTREL_HERE);
  }
}

std::unique_ptr<Item> Chassis::clone() const {
  std::unique_ptr<Chassis> copy(new Chassis(fields_));
  const std::lock_guard<tCriticalSection> held(libraryLock_);
  copy->triggerManagerLibrary_ = triggerManagerLibrary_;
  return copy;
}

std::unique_ptr<Item> Chassis::openContainingItem(std::uint32_t) const {
  tFailure(kErrorInvalidParameter, OSTREL_HERE)
      .debug()
      .text("message", "You cannot get the containing item for a chassis")
      .raise();
}

bool Chassis::lessThan(const Item& other) const {
  if (other.kind() != kind()) return kind() < other.kind();
  return number() < static_cast<const Chassis&>(other).number();
}

std::unique_ptr<Item> openChassisOrAbove(std::uint32_t kind, std::uint32_t chassisNumber,
                                         const tDescription& description) {
  auto chassis = std::make_unique<Chassis>(chassisNumber, description);
  if (kind == varmex_itemType_Chassis) return chassis;
  return chassis->openContainingItem(kind);
}

}  // namespace varmex
