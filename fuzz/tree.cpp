// Takes the input's first line as a URI and as a trigger manager's identifier and the rest as the
// registry's text, and opens, lists and walks what they name in the data tree.

#include <fstream>

#include "fuzz/support.h"
#include "ostrel/quarks/throwingStatus.h"
#include "sevrin/iDataTreeManager.h"
#include "source/varmex/ServicesTreeUtil.h"
#include "source/varmex/nativeTriggerManager.h"

namespace {

using namespace varmex;

// Runs `work(status)`; its failure must have a text that names it.
template <class Work>
void report(Work work) {
  tStatusRecord status = makeStatus();
  work(status);
  fuzz::require(!isFailure(status) || status.text);
  statusReleaseText(status);
}

void walk(const iDataTreeManager& node, const std::string& name) {
  report([&](tStatusRecord& status) {
    for (const std::string& attribute : node.getAttributeNames(status)) {
      const auto value = node.getAttribute(attribute, status);
      fuzz::require(value.valueType == tDataTreeAttribute::kText || !value.text.empty());
    }
    for (const std::string& child : node.getChildNames(status)) {
      fuzz::require(node.getChild(child, status) != nullptr || isFailure(status));
    }
  });
  report([&](tStatusRecord& status) { node.getAttribute(name, status); });
  report([&](tStatusRecord& status) { node.getChild(name, status); });
}

template <class Work>
void swallow(Work work) {
  try {
    work();
  } catch (const corerr::Exception& exception) {
    fuzz::require(isFailure(exception.record()));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string root = fuzz::makeRoot();
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t lineEnd = input.find('\n');
  const std::string line = input.substr(0, lineEnd);
  const std::string registry = lineEnd == std::string::npos ? "" : input.substr(lineEnd + 1);
  std::ofstream(root + "/etc/pxi/registry.reg", std::ios::binary | std::ios::trunc) << registry;
  for (const std::string& uri : {line, "reg://" + line, "reg32://HKEY_LOCAL_MACHINE\\" + line}) {
    report([&](tStatusRecord& status) {
      if (const auto node = iDataTreeManager::open(uri, status)) walk(*node, line);
    });
  }
  swallow([&] { static_cast<void>(ServicesTreeUtil::getTriggerManagerLibrary(line)); });
  swallow([&] { static_cast<void>(isNativeTriggerManager("V", "M", line.c_str())); });
  return 0;
}
