#ifndef OSTREL_QUARKS_RANDOMBYTES_H
#define OSTREL_QUARKS_RANDOMBYTES_H

#include <cstddef>

namespace varmex::inline nOSTRELS100 {

// Fills the memory with bytes that nobody can foretell; false when the system has none to give.
bool fillWithRandomBytes(void* memory, std::size_t size);

}  // namespace varmex::inline nOSTRELS100

#endif
