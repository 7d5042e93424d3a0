#include "tools/varmex/text/replacement.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <random>
#include <stdexcept>

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr const char* kMark = ".varmex-new-";  // and a number
constexpr std::size_t kMostOfName = 200;       // systems limit names to 255

// Beside which name a file is written.
fs::path::string_type stemOf(const fs::path& file) {
  return file.filename().native().substr(0, kMostOfName) + fs::path(kMark).native();
}

fs::path folderOf(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

fs::path fileBehind(const std::string& path) {
  std::error_code error;
  const fs::path file = filePath(path);
  if (!fs::is_symlink(file, error)) return file;
  const fs::path behind = fs::canonical(file, error);
  return error ? file : behind;
}

}  // namespace

tReplacement::tReplacement(const std::string& path) : name_(path), file_(fileBehind(path)) {
  std::error_code ignored;
  const bool isNew = !fs::exists(fs::symlink_status(file_, ignored));
  const fs::file_status old = fs::status(file_, ignored);
  if (!isNew && !fs::is_regular_file(old)) return;
  removeLeftOnes();
  makeBeside();
  if (!isNew) fs::permissions(beside_, old.permissions(), ignored);
}

tReplacement::~tReplacement() {
  std::error_code ignored;
  if (!beside_.empty()) fs::remove(beside_, ignored);
}

void tReplacement::makeBeside() {
  std::random_device random;
  do {
    beside_ = folderOf(file_) / (stemOf(file_) + fs::path(std::to_string(random())).native());
    newFile_.emplace(beside_);
  } while (!newFile_->isMade() && errno == EEXIST);
  if (newFile_->isMade()) return;
  beside_.clear();
  fail();
}

// Those of other writers stay.
void tReplacement::removeLeftOnes() const {
  const fs::path::string_type stem = stemOf(file_);
  std::error_code failure;
  for (fs::directory_iterator entry(folderOf(file_), failure), end; !failure && entry != end;
       entry.increment(failure)) {
    const fs::path::string_type name = entry->path().filename().native();
    const bool isOne = name.starts_with(stem) && name.size() > stem.size() &&
                       std::all_of(name.begin() + static_cast<std::ptrdiff_t>(stem.size()),
                                   name.end(), [](auto c) { return c >= '0' && c <= '9'; });
    if (isOne) removeUnlessInUse(entry->path());
  }
}

void tReplacement::finish() {
  if (beside_.empty()) return;
  if (!renameOver(beside_, file_)) fail();
  beside_.clear();
}

void tReplacement::fail() const {
  throw std::runtime_error("can't write " + name_ + ": " + std::strerror(errno));
}

}  // namespace tool
