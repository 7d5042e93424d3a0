#ifndef OSTREL_QUARKS_HASHSEED_H
#define OSTREL_QUARKS_HASHSEED_H

#include <chrono>
#include <cstdint>

namespace varmex::inline nOSTRELS100 {

// An odd factor for the hashes of one table. It differs from table to table, so that no file can be
// made whose keys all collide.
inline std::uint64_t makeHashSeed(const void* table) {
  const auto time = std::chrono::steady_clock::now().time_since_epoch().count();
  std::uint64_t seed = static_cast<std::uint64_t>(time) ^ reinterpret_cast<std::uintptr_t>(table);
  seed = (seed ^ (seed >> 30)) * 0xBF58476D1CE4E5B9;
  seed = (seed ^ (seed >> 27)) * 0x94D049BB133111EB;
  return (seed ^ (seed >> 31)) | 1;
}

}  // namespace varmex::inline nOSTRELS100

#endif
