#ifndef TOOLS_VARMEX_TEXT_FILES_H
#define TOOLS_VARMEX_TEXT_FILES_H

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

}  // namespace tool

#endif
