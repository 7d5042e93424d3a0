#define _CRT_RAND_S
#include <cstdlib>
#include <cstring>

#include "ostrel/quarks/randomBytes.h"

namespace varmex::inline nOSTRELS100 {

bool fillWithRandomBytes(void* memory, std::size_t size) {
  char* position = static_cast<char*>(memory);
  while (size > 0) {
    unsigned number = 0;
    if (rand_s(&number) != 0) return false;
    const std::size_t share = size < sizeof number ? size : sizeof number;
    std::memcpy(position, &number, share);
    position += share;
    size -= share;
  }
  return true;
}

}  // namespace varmex::inline nOSTRELS100
