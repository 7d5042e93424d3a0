#ifndef TOOLS_VARMEX_CHECK_REGISTRYTEXT_H
#define TOOLS_VARMEX_CHECK_REGISTRYTEXT_H

#include <string>

namespace tool {

// Where the registry stands as a text; empty where it is none.
std::string registryTextPath();

}  // namespace tool

#endif
