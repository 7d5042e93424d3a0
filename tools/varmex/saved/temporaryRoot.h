#ifndef TOOLS_VARMEX_SAVED_TEMPORARYROOT_H
#define TOOLS_VARMEX_SAVED_TEMPORARYROOT_H

#include <optional>
#include <string>

#include "tools/varmex/saved/savedFile.h"

namespace tool {

// Where saved installations become what the library reads: a root of this process that no other
// user can enter. It holds one installation at a time. The end of the process takes it away, also
// by a signal; what a kill left, the next process takes away that makes such a root. A pair: one
// source for each platform.

// Whether the library of this platform can be led to another root.
bool canChangeRoot();

// Fills the root with these files, which lie in kSavedPaths or are kRegistryPath, and answers its
// path. Throws std::runtime_error.
std::string fillTemporaryRoot(const std::vector<tFileContent>& files);
void emptyTemporaryRoot();

// Takes the root away ahead of an end of the process that runs no destructors.
void removeTemporaryRoot();

inline constexpr const char* kRegistryPath = "etc/pxi/registry.reg";

// Leads the library to a root from now on; nothing leads it to the machine's own. Answers the root
// that it was led to before.
std::optional<std::string> changeRoot(const std::optional<std::string>& root);

}  // namespace tool

#endif
