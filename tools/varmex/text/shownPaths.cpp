#include "tools/varmex/text/shownPaths.h"

#include "corpxiTools/fileSystem/utils.h"
#include "varmex/varmex.h"

namespace tool {

namespace {

struct tShownRoot {
  std::string root;
  std::string name;
} shown;

}  // namespace

void showPathsBelow(const std::string& root, const std::string& name) { shown = {root, name}; }

std::string withShownPaths(std::string text) {
  if (shown.root.empty()) return text;
  std::size_t at = 0;
  while ((at = text.find(shown.root, at)) != std::string::npos) {
    text.replace(at, shown.root.size(), shown.name + ':');
    at += shown.name.size();
  }
  return text;
}

std::string configurationPath() {
  tStatusRecord status = varmex_makeStatus();
  std::string path = varmex::getConfigurationPath(status);
  varmex_releaseStatus(&status);
  return path;
}

}  // namespace tool
