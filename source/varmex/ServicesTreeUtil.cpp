#include "source/varmex/ServicesTreeUtil.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "ostrel/quarks/throwingStatus.h"
#include "sevrin/iDataTreeManager.h"
#include "source/varmex/errorCodes.h"

namespace varmex::ServicesTreeUtil {

namespace {

constexpr const char* kServicesTree = "reg://HKEY_LOCAL_MACHINE\\SOFTWARE\\PXISA\\Services";

// What the tree says of a node or an attribute that is not there.
constexpr std::int32_t kAbsences[] = {kStatusFileOpenFault.value, kStatusAttributeNotFound.value,
                                      kStatusChildNotFound.value};

bool isAbsence(std::int32_t code) {
  return std::find(std::begin(kAbsences), std::end(kAbsences), code) != std::end(kAbsences);
}

tDataTreeManagerPtr childOf(const tDataTreeManagerPtr& node, const std::string& name,
                            tStatusRecord& status) {
  return node ? node->getChild(name, status) : nullptr;
}

// What stands behind the first backslash is one child's name, whatever backslashes it holds.
tDataTreeManagerPtr managerOf(const std::string& identifier, tStatusRecord& status) {
  const auto root = iDataTreeManager::open(kServicesTree, status);
  const auto managers = childOf(root, "Trigger Managers", status);
  const std::size_t backslash = identifier.find('\\');
  auto first = childOf(managers, identifier.substr(0, backslash), status);
  if (backslash == std::string::npos) return first;
  return childOf(first, identifier.substr(backslash + 1), status);
}

// A text without content where there is none.
tDataTreeAttribute findLibrary(const std::string& identifier) {
  tThrowingStatus<tStatusRecord> owned;
  tStatusRecord& status = owned;
  const auto manager = managerOf(identifier, status);
  tDataTreeAttribute library;
  if (manager) library = manager->getAttribute("Library", status);
  if (isAbsence(status.code)) status.code = 0;
  return library;
}

}  // namespace

tResult<std::string> getTriggerManagerLibrary(const std::string& identifier) {
  tDataTreeAttribute library = findLibrary(identifier);
  if (library.valueType == tDataTreeAttribute::kText) return std::move(library.text);
  return tRefusal(kErrorTriggerManagerLibraryNotFound, OSTREL_HERE)
      .debug()
      .i32("valueType", library.valueType);
}

}  // namespace varmex::ServicesTreeUtil
