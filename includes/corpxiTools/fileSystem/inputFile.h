#ifndef CORPXITOOLS_FILESYSTEM_INPUTFILE_H
#define CORPXITOOLS_FILESYSTEM_INPUTFILE_H

#include <cstddef>
#include <cstdint>

namespace varmex::inline nCORPXITOOLS000 {

// Whether the caller has found a regular file at a path just now, so that none needs to be looked
// for again.
enum class tLooked : bool { no, yes };

// A regular file that is read from front to back, byte for byte and without a buffer in between.
// What is no regular file can't be opened: nobody waits for it, and nothing is read from it. No
// child process inherits it. After a failure `errno` tells why.
class tInputFile {
 public:
  explicit tInputFile(const char* path, tLooked looked = tLooked::no);
  tInputFile(const tInputFile&) = delete;
  tInputFile& operator=(const tInputFile&) = delete;
  ~tInputFile();

  bool isOpen() const { return descriptor_ >= 0; }

  // For a lock on the file. It stays this object's; -1 when the file is not open.
  int descriptor() const { return descriptor_; }

  // In bytes, 0 when the system does not tell. The file may grow or shrink meanwhile.
  std::uint64_t size() const;

  // What it was when the file was opened.
  std::uint64_t sizeAtOpen() const { return sizeAtOpen_; }

  // How many bytes came into the buffer, less than its size at the end of the file alone; negative
  // on failure.
  std::int64_t read(char* buffer, std::size_t size);

 private:
  int descriptor_ = -1;
  std::uint64_t sizeAtOpen_ = 0;
  std::uint64_t position_ = 0;
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
