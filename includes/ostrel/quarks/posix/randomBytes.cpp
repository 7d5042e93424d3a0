#include "ostrel/quarks/randomBytes.h"

#include <sys/random.h>

#include <cerrno>

namespace varmex::inline nOSTRELS100 {

bool fillWithRandomBytes(void* memory, std::size_t size) {
  char* position = static_cast<char*>(memory);
  while (size > 0) {
    const ssize_t count = getrandom(position, size, GRND_NONBLOCK);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    position += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace varmex::inline nOSTRELS100
