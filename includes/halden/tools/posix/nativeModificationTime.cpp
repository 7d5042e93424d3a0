#include "halden/tools/nativeModificationTime.h"

#include <sys/stat.h>

#include <cerrno>
#include <string>

namespace halden {

namespace {

bool hasFolder(const std::string& path) {
  const std::size_t separator = path.rfind('/');
  const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
  struct stat answer {};
  return stat(folder.c_str(), &answer) == 0;
}

}  // namespace

tTimeAnswer queryLastWriteTime(const char* path, std::uint64_t& time, tStatusRecord&) {
  struct stat answer {};
  if (stat(path, &answer) == 0) {
    time = static_cast<std::uint64_t>(answer.st_mtim.tv_sec) * 1'000'000'000 +
           static_cast<std::uint64_t>(answer.st_mtim.tv_nsec);
    return tTimeAnswer::found;
  }
  if (errno == EACCES) return tTimeAnswer::denied;
  if (errno == ENOENT && hasFolder(path)) return tTimeAnswer::notFound;
  return tTimeAnswer::failed;
}

}  // namespace halden
