#ifndef FUZZ_SUPPORT_H
#define FUZZ_SUPPORT_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace fuzz {

// Ends the run where a promise does not hold.
inline void require(bool holds) {
  if (!holds) std::abort();
}

// A folder for VARMEX_FSROOT, with the folders of a description.
inline std::string makeRoot() {
  std::string root = "/tmp/varmex-fuzz-XXXXXX";
  require(mkdtemp(root.data()) != nullptr);
  std::filesystem::create_directories(root + "/etc/pxi");
  std::filesystem::create_directories(root + "/var/lib");
  setenv("VARMEX_FSROOT", root.c_str(), 1);
  return root;
}

// A file in memory that can be opened by its path, with new content for each input.
class tMemoryFile {
 public:
  explicit tMemoryFile(const char* name) : file_(memfd_create(name, 0)) {
    path_ = "/proc/self/fd/" + std::to_string(file_);
  }
  void write(const std::uint8_t* data, std::size_t size) {
    require(ftruncate(file_, 0) == 0);
    require(pwrite(file_, data, size, 0) == static_cast<ssize_t>(size));
  }
  const std::string& path() const { return path_; }

 private:
  int file_;
  std::string path_;
};

}  // namespace fuzz

#endif
