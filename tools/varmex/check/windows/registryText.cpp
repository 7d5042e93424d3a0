#include "tools/varmex/check/registryText.h"

namespace tool {

std::string registryTextPath() { return {}; }

}  // namespace tool
