#ifndef TOOLS_VARMEX_SAVED_SOURCE_H
#define TOOLS_VARMEX_SAVED_SOURCE_H

#include <optional>
#include <stdexcept>
#include <string>

#include "tools/varmex/saved/savedFile.h"

namespace tool {

// What is no installation. Its text names it.
class tNoSource : public std::runtime_error {
 public:
  tNoSource(const std::string& text, std::string reason)
      : std::runtime_error(text), reason_(std::move(reason)) {}

  // The text without the name.
  const std::string& reason() const { return reason_; }

 private:
  std::string reason_;
};

// Another installation than the machine's own: a saved file, also one that comes through a pipe or,
// by the name "-", the standard input, or the folder that is its root. It is what the library reads
// in this process from the construction to the destruction; there is one at a time, and sessions on
// it are closed before it goes.
class tSource {
 public:
  // Throws tNoSource, and changes nothing, for what can't be read, and std::runtime_error where
  // there can't be another installation.
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
