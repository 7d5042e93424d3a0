#include "tools/varmex/describe/listing.h"

#include <filesystem>
#include <set>
#include <stdexcept>

namespace tool {

namespace {

std::string chassisSection(std::uint32_t chassis) { return "Chassis" + std::to_string(chassis); }

void readIfThere(const std::string& path, varmex::tIniFile& file) {
  if (std::filesystem::exists(path)) file.read(path);
}

// What `read` makes of an item.
template <class Read>
auto valueOf(const varmex::tIniFile& file, const std::string& section, const std::string& item,
             Read read) {
  const varmex::tIniSection* const place = file.findSection(section);
  const varmex::tIniItem* const found = file.findItem(place, item);
  if (!found) throw varmex::tIniException("Section " + section + " item: " + item + " not found");
  const auto value = read(*place, *found);
  if (!value) throw varmex::tIniException(value.refusal().message());
  return *value;
}

std::uint32_t unsignedOf(const varmex::tIniFile& file, const std::string& section,
                         const std::string& item) {
  return valueOf(file, section, item, varmex::tIniFile::unsignedOf);
}

tNumbers listOf(const varmex::tIniFile& file, const std::string& section, const std::string& item) {
  return valueOf(file, section, item, varmex::tIniFile::numbersOf);
}

void addList(const varmex::tIniFile& file, const std::string& section, const char* item,
             std::set<std::uint32_t>& numbers) {
  if (!file.hasItem(file.findSection(section), item)) return;
  const tNumbers list = listOf(file, section, item);
  numbers.insert(list.begin(), list.end());
}

[[noreturn]] void fail(std::int32_t code, const char* constant, const std::string& detail) {
  throw varmex::Error(
      code, (std::string("{\"error_constant\":\"") + constant + "\"," + detail + '}').c_str());
}

}  // namespace

tListing::tListing(const varmex::Session& session) {
  readIfThere(session.pxiSysPath(), classic_);
  readIfThere(session.pxieSysPath(), express_);
}

tNumbers tListing::chassis() const {
  std::set<std::uint32_t> numbers;
  addList(classic_, classic_.hasSection("System") ? "System" : "PXI System", "ChassisList",
          numbers);
  addList(express_, "System", "ChassisList", numbers);
  return {numbers.begin(), numbers.end()};
}

tNumbers tListing::numbers(std::uint32_t chassis, const char* list) const {
  std::set<std::uint32_t> numbers;
  for (const varmex::tIniFile* const file : {&classic_, &express_}) {
    addList(*file, chassisSection(chassis), list, numbers);
  }
  return {numbers.begin(), numbers.end()};
}

const varmex::tIniFile* tListing::firstWith(const std::string& section) const {
  if (classic_.hasSection(section)) return &classic_;
  return express_.hasSection(section) ? &express_ : nullptr;
}

tListing::tBridge tListing::openBridge(std::uint32_t chassis, std::uint32_t number) const {
  tBridge bridge;
  bridge.listing_ = this;
  bridge.chassis_ = chassis;
  bridge.number_ = number;
  bridge.section_ = chassisSection(chassis) + "TriggerBridge" + std::to_string(number);
  if (!firstWith(bridge.section_)) {
    fail(varmex_errorUnknownItem, "varmex_errorUnknownItem",
         "\"type\":\"triggerBridge\",\"bridgeNum\":" + std::to_string(number) +
             ",\"chassisNum\":" + std::to_string(chassis));
  }
  // The classic file alone, as the library does.
  bridge.mapping_ = chassisSection(chassis) + "LineMappingSpec" +
                    std::to_string(unsignedOf(classic_, bridge.section_, "LineMappingSpec"));
  return bridge;
}

std::uint32_t tListing::tBridge::u32(std::uint32_t attribute) const {
  const varmex::tIniFile& file = *listing_->firstWith(section_);
  switch (attribute) {
    case varmex_u32_ChassisNumber: return chassis_;
    case varmex_u32_BridgeNumber: return number_;
    case varmex_u32_BridgeSourceTriggerBus: return unsignedOf(file, section_, "SourceTriggerBus");
    case varmex_u32_BridgeDestinationTriggerBus:
      return unsignedOf(file, section_, "DestinationTriggerBus");
    default:
      return lineMapping("PXI_TRIG" + std::to_string(attribute - varmex_u32_BridgeLineMapping0));
  }
}

std::uint32_t tListing::tBridge::lineMapping(const std::string& item) const {
  const varmex::tIniFile* const file = listing_->firstWith(mapping_);
  if (!file) {
    fail(varmex_errorInformationNotAvailable, "varmex_errorInformationNotAvailable",
         "\"itemName\":\"" + item + "\",\"mappingSection_\":\"" + mapping_ + '"');
  }
  std::uint32_t mask = 0;
  for (const std::uint32_t line : listOf(*file, mapping_, item)) {
    if (line == 8) throw std::out_of_range("invalid bitset<N> position");
    if (line > 8) {
      fail(varmex_errorInformationConflict, "varmex_errorInformationConflict",
           "\"attribute\":\"" + item +
               "\",\"destinationLine\":" + std::to_string(static_cast<std::int32_t>(line)));
    }
    mask |= 1U << line;
  }
  return mask;
}

}  // namespace tool
