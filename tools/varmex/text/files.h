#ifndef TOOLS_VARMEX_TEXT_FILES_H
#define TOOLS_VARMEX_TEXT_FILES_H

#include <cstdint>
#include <filesystem>
#include <string>

namespace tool {

// Files by their paths in UTF-8, of any length. A pair: one source for each platform.

// The path by which a stream opens the file.
std::filesystem::path filePath(const std::string& path);

bool isThere(const std::string& path);

// The folder with those above it, as far as they are missing. Throws std::runtime_error with its
// path when that can't be done.
void makeFolder(const std::string& path);

// Gives a file the name of another one of the same folder, in the place of that one if there is
// one. False, with `errno` set, when that can't be done.
bool renameOver(const std::filesystem::path& from, const std::filesystem::path& to);

// A new, empty file that is in use as long as this lives.
class tNewFile {
 public:
  explicit tNewFile(const std::filesystem::path& path);
  tNewFile(const tNewFile&) = delete;
  tNewFile& operator=(const tNewFile&) = delete;
  ~tNewFile();

  // False, with `errno` set, when it can't be made: EEXIST where another name may do.
  bool isMade() const { return handle_ >= 0; }

 private:
  std::intptr_t handle_;
};

// Takes away a file of this user that no tNewFile has in use.
void removeUnlessInUse(const std::filesystem::path& path);

}  // namespace tool

#endif
