#include "tools/varmex/check/registryText.h"

#include "corpxiTools/fileSystem/folders.h"

namespace tool {

std::string registryTextPath() { return varmex::getWindowsFolder() + "registry.reg"; }

}  // namespace tool
