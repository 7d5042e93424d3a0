#ifndef CORPXITOOLS_FILESYSTEM_INPUTFILE_H
#define CORPXITOOLS_FILESYSTEM_INPUTFILE_H

#include <cstddef>
#include <cstdint>

namespace varmex::inline nCORPXITOOLS000 {

// A file that is read from front to back, byte for byte and without a buffer in between.
class tInputFile {
 public:
  explicit tInputFile(const char* path);
  tInputFile(const tInputFile&) = delete;
  tInputFile& operator=(const tInputFile&) = delete;
  ~tInputFile();

  bool isOpen() const { return descriptor_ >= 0; }

  // In bytes, 0 when the system does not tell. The file may grow meanwhile.
  std::uint64_t size() const;

  // How many bytes came into the buffer, less than its size at the end of the file alone; negative
  // on failure.
  std::int64_t read(char* buffer, std::size_t size);

 private:
  int descriptor_;
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
