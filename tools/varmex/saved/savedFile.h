#ifndef TOOLS_VARMEX_SAVED_SAVEDFILE_H
#define TOOLS_VARMEX_SAVED_SAVEDFILE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/varmex/machine/pciTree.h"
#include "tools/varmex/saved/registryValues.h"

namespace tool {

struct tFileContent {
  std::string path;
  std::string bytes;
};

// An installation as it was at one moment on one machine. docs/saved.md tells how it is written.
struct tSavedInstallation {
  std::string taken;  // "2026-11-21T14:31:07Z"
  std::string host;
  std::string platform;             // "linux" or "windows"
  std::string version;              // of the varmex that saved it
  std::vector<tFileContent> files;  // by their path below a root, those of savedPaths() alone
  tRegistryValues registry;
  std::vector<tFileContent> chassisFiles;  // by their path as the library answers it
  std::optional<tPciTree> pci;             // where the machine tells of it
};

// What an installation is made of: the files, as they lie below a root.
inline constexpr const char* kSavedPaths[] = {"etc/pxi/pxisys.ini", "etc/pxi/pxiesys.ini",
                                              "var/lib/PXISA/configuration.ini"};

inline constexpr std::size_t kMostSavedBytes = std::size_t{64} << 20;
inline constexpr std::size_t kMostChassisFiles = 255;

// How the element of a page that holds the document begins ("<script" ahead of it).
inline constexpr const char* kSavedAttributes = " id=\"saved-installation\"";

// The document, for programs and people.
std::string textOf(const tSavedInstallation& saved);

// Reads the document, or a page that holds it. Nothing in it is trusted. Throws std::runtime_error,
// which tells what is wrong, for all that is no saved installation of a version that this reads.
tSavedInstallation readSaved(std::string_view text);

}  // namespace tool

#endif
