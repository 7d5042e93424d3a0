#include "tools/varmex/saved/source.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "corpxiTools/fileSystem/fileBytes.h"
#include "tools/varmex/saved/temporaryRoot.h"
#include "tools/varmex/text/shownPaths.h"

namespace tool {

namespace {

// The standard input, by the name that it has among options.
constexpr const char* kInput = "-";

constexpr const char* kSourcesThatFit =
    "name a file that \"varmex save\" wrote, or a folder as VARMEX_FSROOT";

std::string nameOf(const std::string& path) { return path == kInput ? "standard input" : path; }

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
  throw tNoSource("can't read " + nameOf(path) + ": " + reason + "; " + kSourcesThatFit,
                  "can't be read: " + reason);
}

[[noreturn]] void refuseSize(const std::string& path) { refuse(path, "it has more than 64 MB"); }

// A pipe and its like tell no size, and are read once.
std::string readStream(const std::string& path) {
  const bool isInput = path == kInput;
  const std::unique_ptr<std::FILE, void (*)(std::FILE*)> stream(
      isInput ? stdin : std::fopen(path.c_str(), "rb"), [](std::FILE* file) {
        if (file != stdin) std::fclose(file);
      });
  if (!stream) refuse(path, std::strerror(errno));
  std::string bytes;
  char part[65536];
  while (const std::size_t size = std::fread(part, 1, sizeof part, stream.get())) {
    bytes.append(part, size);
    if (bytes.size() > kMostSavedBytes) refuseSize(path);
  }
  if (std::ferror(stream.get())) refuse(path, std::strerror(errno));
  return bytes;
}

std::string readRegular(const std::string& path) {
  varmex::tInputFile file(path.c_str());
  if (!file.isOpen()) refuse(path, std::strerror(errno));
  if (file.size() > kMostSavedBytes) refuseSize(path);
  varmex::tFileBytes content;
  if (!varmex::readWholeFile(file, 0, content)) refuse(path, std::strerror(errno));
  return {content.bytes.get(), content.size};
}

tSavedInstallation readFile(const std::string& path) {
  std::error_code ignored;
  const bool isStream = path == kInput || std::filesystem::is_other(path, ignored);
  const std::string bytes = isStream ? readStream(path) : readRegular(path);
  try {
    return readSaved(bytes);
  } catch (const std::runtime_error& error) {
    const std::string reason = std::string("is no saved installation: ") + error.what();
    throw tNoSource(nameOf(path) + ' ' + reason + "; " + kSourcesThatFit, reason);
  }
}

std::vector<tFileContent> filesOf(const tSavedInstallation& saved) {
  std::vector<tFileContent> files = saved.files;
  if (!saved.registry.empty()) files.push_back({kRegistryPath, registryTextOf(saved.registry)});
  return files;
}

}  // namespace

tSource::tSource(const std::string& path) {
  if (!canChangeRoot()) {
    throw std::runtime_error(
        "on Windows only the machine's own installation can be read; look at saved files and other "
        "roots on Linux");
  }
  if (path.empty()) throw tNoSource("the name of the saved file or folder is empty", "no name");
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    before_ = changeRoot(path);
    return;
  }
  saved_ = readFile(path);
  try {
    const std::string root = fillTemporaryRoot(filesOf(*saved_));
    before_ = changeRoot(root);
    showPathsBelow(root, nameOf(path));
  } catch (...) {
    emptyTemporaryRoot();
    throw;
  }
}

tSource::~tSource() {
  changeRoot(before_);
  if (saved_) emptyTemporaryRoot();
  showPathsBelow({}, {});
}

}  // namespace tool
