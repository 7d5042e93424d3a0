#include "tools/varmex/saved/source.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "corpxiTools/fileSystem/fileBytes.h"
#include "tools/varmex/saved/temporaryRoot.h"
#include "tools/varmex/text/shownPaths.h"

namespace tool {

namespace {

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
  throw std::runtime_error("can't read " + path + ": " + reason);
}

tSavedInstallation readFile(const std::string& path) {
  varmex::tInputFile file(path.c_str());
  if (!file.isOpen()) refuse(path, std::strerror(errno));
  if (file.size() > kMostSavedBytes) refuse(path, "it has more than 64 MB");
  varmex::tFileBytes content;
  if (!varmex::readWholeFile(file, 0, content)) refuse(path, std::strerror(errno));
  try {
    return readSaved({content.bytes.get(), content.size});
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(path + " is no saved installation: " + error.what());
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
  if (path.empty()) throw std::runtime_error("the name of the saved file or folder is empty");
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    before_ = changeRoot(path);
    return;
  }
  saved_ = readFile(path);
  try {
    const std::string root = fillTemporaryRoot(filesOf(*saved_));
    before_ = changeRoot(root);
    showPathsBelow(root, path);
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
