#include "tools/varmex/text/files.h"

#include <cstdio>
#include <stdexcept>

namespace tool {

std::filesystem::path filePath(const std::string& path) { return path; }

bool isThere(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

void makeFolder(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error) throw std::runtime_error("can't make the folder " + path + ": " + error.message());
}

bool renameOver(const std::filesystem::path& from, const std::filesystem::path& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace tool
