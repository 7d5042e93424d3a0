#include "corpxiTools/fileSystem/posix/fileSystemRoot.h"

#include <cstdlib>
#include <string_view>

namespace varmex::inline nCORPXITOOLS000 {

namespace {

constexpr std::size_t kRoomBehind = 40;  // for the path that a caller appends, mostly

}  // namespace

std::string fileSystemRoot() {
  const char* const variable = secure_getenv("VARMEX_FSROOT");
  const std::string_view root = variable ? variable : "";
  std::string path;
  path.reserve(root.size() + kRoomBehind);
  path += root;
  return path;
}

}  // namespace varmex::inline nCORPXITOOLS000
