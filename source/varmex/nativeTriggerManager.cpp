#include "source/varmex/nativeTriggerManager.h"

#include <boost/algorithm/string/predicate.hpp>
#include <string>
#include <vector>

#include "corpxiTools/fileSystem/registry.h"
#include "source/varmex/errorCodes.h"
#include "source/varmex/serviceLibrary.h"

namespace varmex {

namespace {

// The texts up to the first empty one, or to the end of a value that was stored without one.
std::vector<std::string> splitTextList(const std::string& value) {
  std::vector<std::string> texts;
  std::size_t begin = 0;
  while (begin < value.size() && value[begin] != '\0') {
    texts.emplace_back(value.c_str() + begin);
    begin += texts.back().size() + 1;
  }
  return texts;
}

std::vector<std::string> readTextList(const char* keyPath, const char* name) {
  tRegistryKey key;
  if (key.open(tRegistryRoot::localMachine, keyPath, tRegistryView::process) != 0) {
    throw RegistryException(
        "WARNING: RegOpenKeyEx failed (likely because the requested key does not exist).");
  }
  std::uint32_t type = 0;
  std::uint32_t size = 0;
  std::string value;
  std::uint32_t error = key.queryValue(name, type, nullptr, size);
  if (error == 0) {
    value.resize(size);
    error = key.queryValue(name, type, value.data(), size);
  }
  if (error != 0) {
    throw RegistryException("WARNING: RegQueryValueEx could not retrieve requested value.");
  }
  if (type != kRegistryTextList) {
    throw RegistryException("WARNING: RegQueryValueEx returned unexpected type.");
  }
  return splitTextList(value);
}

// Without the list no manager is known not to be native.
bool isListedAsForeign(const std::string& identifier) {
  try {
    const auto foreign = readTextList("SOFTWARE\\Corvane\\COR-DUNMOR", "TriggerManagersNoForward");
    return std::find(foreign.begin(), foreign.end(), identifier) != foreign.end();
  } catch (const RegistryException&) {
    return false;
  }
}

tResult<bool> isNativeByList(const char* identifier) {
  constexpr tLiteral kAttribute = "varmex_str_ChassisTriggerManagerIdentifier";
  if (*identifier == '\0') {
    return tRefusal(kErrorInformationConflict, OSTREL_HERE)
        .debug()
        .text("attribute", kAttribute)
        .text("tmIdentifier", "<empty>");
  }
  if (boost::algorithm::iequals(identifier, "None", std::locale::classic())) {
    return tRefusal(kErrorInformationNotAvailable, OSTREL_HERE)
        .debug()
        .text("attribute", kAttribute)
        .text("tmIdentifier", identifier);
  }
  return !isListedAsForeign(identifier);
}

}  // namespace

tResult<bool> isNativeTriggerManager(const char* vendor, const char* model,
                                     const char* identifier) {
  switch (getChassisTriggerManagerMode(vendor, model, identifier)) {
    case kModeZero:
    case kServiceLibraryMissing: return true;
    case kModeOther: return false;
    case kModeFunctionMissing: return isNativeByList(identifier);
    default:
      return tRefusal(kErrorInformationNotAvailable, OSTREL_HERE)
          .debug()
          .text("attribute", "varmex_u32_IsTriggerManagerNative");
  }
}

}  // namespace varmex
