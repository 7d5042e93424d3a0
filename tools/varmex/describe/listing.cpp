#include "tools/varmex/describe/listing.h"

#include <set>

#include "source/varmex/boundary.h"
#include "tools/varmex/text/files.h"

namespace tool {

namespace {

// What the library answers, or its failure.
template <class Value>
Value answered(const varmex::tResult<Value>& result) {
  if (result) return *result;
  varmex::Status status;
  tStatusRecord* const record = status;
  varmex::reportRefusal(result.refusal(), *record, OSTREL_HERE);
  throw status.error();
}

void addList(const varmex::tIniFile& file, const varmex::tShortName& section, varmex::tLiteral item,
             std::set<std::uint32_t>& numbers) {
  if (!file.hasItem(file.findSection(section), item)) return;
  const tNumbers list = answered(file.getNumberList(file.placeOf(section), item));
  numbers.insert(list.begin(), list.end());
}

}  // namespace

tListing::tListing(const varmex::Session& session) {
  const std::string pxiSys = session.pxiSysPath();
  const std::string pxieSys = session.pxieSysPath();
  if (isThere(pxiSys)) files_.pxiSys.read(pxiSys);
  if (isThere(pxieSys)) files_.pxieSys.read(pxieSys);
}

tNumbers tListing::chassis() const {
  std::set<std::uint32_t> numbers;
  const bool hasNewName = files_.pxiSys.hasSection("System");
  addList(files_.pxiSys, varmex::tShortName(hasNewName ? "System" : "PXI System"), "ChassisList",
          numbers);
  addList(files_.pxieSys, varmex::tShortName("System"), "ChassisList", numbers);
  return {numbers.begin(), numbers.end()};
}

tNumbers tListing::numbers(std::uint32_t chassis, varmex::tLiteral list) const {
  std::set<std::uint32_t> numbers;
  for (const varmex::tIniFile* const file : {&files_.pxiSys, &files_.pxieSys}) {
    addList(*file, varmex::chassisKey(chassis), list, numbers);
  }
  return {numbers.begin(), numbers.end()};
}

varmex::tBridgePlace tListing::openBridge(std::uint32_t chassis, std::uint32_t number) const {
  return answered(varmex::findBridge(chassis, number, files_));
}

std::uint32_t tListing::numberOf(const varmex::tBridgePlace& bridge,
                                 std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ChassisNumber: return bridge.chassis;
    case varmex_u32_BridgeNumber: return bridge.number;
    default: return answered(varmex::readBridge(bridge, attribute, files_));
  }
}

}  // namespace tool
