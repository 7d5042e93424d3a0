#ifndef TOOLS_VARMEX_SAVED_SOURCE_H
#define TOOLS_VARMEX_SAVED_SOURCE_H

#include <optional>
#include <string>

#include "tools/varmex/saved/savedFile.h"

namespace tool {

// Another installation than the machine's own: a saved file, or the folder that is its root. It is
// what the library reads in this process from the construction to the destruction; there is one at
// a time, and sessions on it are closed before it goes.
class tSource {
 public:
  // Throws std::runtime_error, and changes nothing, for what can't be read.
  explicit tSource(const std::string& path);
  tSource(const tSource&) = delete;
  tSource& operator=(const tSource&) = delete;
  ~tSource();

  // What a saved file holds; null for a folder.
  const tSavedInstallation* saved() const { return saved_ ? &*saved_ : nullptr; }

 private:
  std::optional<tSavedInstallation> saved_;
  std::optional<std::string> before_;  // the root that the process had
};

}  // namespace tool

#endif
