#ifndef TOOLS_VARMEX_TEXT_REPLACEMENT_H
#define TOOLS_VARMEX_TEXT_REPLACEMENT_H

#include <filesystem>
#include <optional>
#include <string>

#include "tools/varmex/text/files.h"

namespace tool {

// A file that is written under a name beside its own and gets its own when it is whole. Until then
// a file that has the name is as it was, and so is all where it never becomes whole: the
// destruction takes away what was written, and after a kill the next one that is written to the
// same name does. Through a link it is the file that the link leads to. A device or a pipe is
// written as it is.
class tReplacement {
 public:
  // Throws std::runtime_error where there can't be such a file.
  explicit tReplacement(const std::string& path);
  tReplacement(const tReplacement&) = delete;
  tReplacement& operator=(const tReplacement&) = delete;
  ~tReplacement();

  // Where to write it.
  const std::filesystem::path& path() const { return beside_.empty() ? file_ : beside_; }

  // It is whole. Throws std::runtime_error where it can't have the name.
  void finish();

  // It can't be written, for the reason that `errno` has.
  [[noreturn]] void fail() const;

 private:
  void makeBeside();
  void removeLeftOnes() const;

  std::string name_;              // as it was given
  std::filesystem::path file_;    // that will have the content
  std::filesystem::path beside_;  // empty where that is written as it is, and in the end
  std::optional<tNewFile> newFile_;
};

}  // namespace tool

#endif
