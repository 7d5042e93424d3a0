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

void addList(const varmex::tIniFile& file, const std::string& section, const char* item,
             std::set<std::uint32_t>& numbers) {
  if (!file.hasItem(section, item)) return;
  const tNumbers list = file.getNumberList(section, item);
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
                    std::to_string(classic_.getUnsigned(bridge.section_, "LineMappingSpec"));
  return bridge;
}

std::uint32_t tListing::tBridge::u32(std::uint32_t attribute) const {
  const varmex::tIniFile& file = *listing_->firstWith(section_);
  switch (attribute) {
    case varmex_u32_ChassisNumber: return chassis_;
    case varmex_u32_BridgeNumber: return number_;
    case varmex_u32_BridgeSourceTriggerBus: return file.getUnsigned(section_, "SourceTriggerBus");
    case varmex_u32_BridgeDestinationTriggerBus:
      return file.getUnsigned(section_, "DestinationTriggerBus");
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
  for (const std::uint32_t line : file->getNumberList(mapping_, item)) {
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
