#include "corpxiTools/fileSystem/posix/fileSystemRoot.h"

#include <cstdlib>
#include <string_view>

namespace varmex::inline nCORPXITOOLS000 {

namespace {

// What callers mostly put behind it.
constexpr std::size_t kLongestPath = 40;

}  // namespace

std::string fileSystemRoot() {
  const char* const variable = secure_getenv("VARMEX_FSROOT");
  const std::string_view root = variable ? variable : "";
  std::string path;
  path.reserve(root.size() + kLongestPath);
  path += root;
  return path;
}

}  // namespace varmex::inline nCORPXITOOLS000
