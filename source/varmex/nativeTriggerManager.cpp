#include "source/varmex/nativeTriggerManager.h"

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <optional>
#include <string>
#include <vector>

#include "corpxiTools/fileSystem/registryKey.h"
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

// Nothing where the registry has no such list.
std::optional<std::vector<std::string>> readTextList(const char* keyPath, const char* name) {
  tRegistryKey key;
  if (key.open(tRegistryRoot::localMachine, keyPath, tRegistryView::process) != 0) return {};
  std::uint32_t type = 0;
  std::uint32_t size = 0;
  if (key.queryValue(name, type, nullptr, size) != 0) return {};
  std::string value(size, '\0');
  if (key.queryValue(name, type, value.data(), size) != 0) return {};
  if (type != kRegistryTextList) return {};
  return splitTextList(value);
}

// Without the list no manager is known not to be native.
bool isListedAsForeign(const char* identifier) {
  const auto foreign = readTextList("SOFTWARE\\Corvane\\COR-DUNMOR", "TriggerManagersNoForward");
  return foreign && std::find(foreign->begin(), foreign->end(), identifier) != foreign->end();
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
