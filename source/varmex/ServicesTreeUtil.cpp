#include "source/varmex/ServicesTreeUtil.h"

#include "ostrel/quarks/throwingStatus.h"
#include "sevrin/iDataTreeManager.h"
#include "source/varmex/errorCodes.h"

namespace varmex::ServicesTreeUtil {

namespace {

constexpr const char* kServicesTree = "reg://HKEY_LOCAL_MACHINE\\SOFTWARE\\PXISA\\Services";

using tStatus = tThrowingStatus<tStatusRecord>;

tDataTreeManagerPtr openTree(const std::string& uri) {
  tStatus status;
  return iDataTreeManager::open(uri, status);
}

tDataTreeManagerPtr childOf(const iDataTreeManager& node, const std::string& name) {
  tStatus status;
  return node.getChild(name, status);
}

tDataTreeAttribute attributeOf(const iDataTreeManager& node, const std::string& name) {
  tStatus status;
  return node.getAttribute(name, status);
}

std::string readLibrary(const iDataTreeManager& manager) {
  const tDataTreeAttribute library = attributeOf(manager, "Library");
  if (library.valueType != tDataTreeAttribute::kText) {
    tFailure(kErrorTriggerManagerLibraryNotFound, OSTREL_HERE)
        .debug()
        .i32("valueType", library.valueType)
        .raise();
  }
  return library.text;
}

// What stands behind the first backslash is one child's name, whatever backslashes it holds.
std::string getTriggerManagerLibrary(const std::string& uri, const std::string& identifier) {
  const tDataTreeManagerPtr root = openTree(uri);
  const tDataTreeManagerPtr managers = childOf(*root, "Trigger Managers");
  const std::size_t backslash = identifier.find('\\');
  const tDataTreeManagerPtr first = childOf(*managers, identifier.substr(0, backslash));
  if (backslash == std::string::npos) return readLibrary(*first);
  return readLibrary(*childOf(*first, identifier.substr(backslash + 1)));
}

}  // namespace

std::string getTriggerManagerLibrary(const std::string& identifier) {
  return getTriggerManagerLibrary(kServicesTree, identifier);
}

}  // namespace varmex::ServicesTreeUtil
