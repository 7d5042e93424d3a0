#include "halden/internal/posix/pathWalk.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <vector>

namespace halden {

namespace {

constexpr int kMostLinks = 40;  // as the system has it

// Puts the parts of a path on the stack, the first on top.
void push(std::vector<std::string>& parts, const std::string& path) {
  std::size_t end = path.size();
  while (end > 0) {
    const std::size_t separator = path.rfind('/', end - 1);
    const std::size_t begin = separator == std::string::npos ? 0 : separator + 1;
    const std::string part = path.substr(begin, end - begin);
    if (!part.empty() && part != ".") parts.push_back(part);
    end = begin > 0 ? begin - 1 : 0;
  }
}

std::string startOf(const std::string& path) { return path.starts_with('/') ? "/" : "."; }

std::string join(const std::string& folder, const std::string& name) {
  return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

// Empty when it is none any more.
std::string readLink(const std::string& path) {
  char target[PATH_MAX];
  const ssize_t size = readlink(path.c_str(), target, sizeof target);
  return std::string(target, size > 0 ? static_cast<std::size_t>(size) : 0);
}

}  // namespace

bool walkPath(const std::string& path, iPathVisitor& visitor) {
  std::string folder = startOf(path);
  std::vector<std::string> parts;
  push(parts, path);
  int links = 0;
  while (!parts.empty()) {
    const std::string name = std::move(parts.back());
    parts.pop_back();
    const std::string here = join(folder, name);
    if (name == "..") {
      folder = here;
      continue;
    }
    if (!visitor.visitEntry(folder, name)) return false;
    struct stat file {};
    if (lstat(here.c_str(), &file) != 0) return true;
    const bool isLink = S_ISLNK(file.st_mode);
    if ((isLink || parts.empty()) && !visitor.visitItself(here)) return false;
    if (isLink) {
      const std::string target = readLink(here);
      if (target.empty() || ++links > kMostLinks) return true;
      push(parts, target);
      if (target.starts_with('/')) folder = "/";
    } else {
      folder = here;
    }
  }
  return true;
}

}  // namespace halden
