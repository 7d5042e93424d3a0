#ifndef OSTREL_QUARKS_HASHSEED_H
#define OSTREL_QUARKS_HASHSEED_H

#include <chrono>
#include <cstdint>

namespace varmex::inline nOSTRELS100 {

// The key of the hashes of one table. It differs from table to table, so that no file can be made
// whose keys all collide.
class tHashSeed {
 public:
  explicit tHashSeed(const void* table)
      : low_(mix(static_cast<std::uint64_t>(
                     std::chrono::steady_clock::now().time_since_epoch().count()) ^
                 reinterpret_cast<std::uintptr_t>(table)) |
             1),
        high_(mix(low_) | 1) {}

  // Each half of the word has a factor of its own: what a difference in either comes to can't be
  // told without the key, so that no other difference can be chosen to cancel it.
  std::uint64_t scramble(std::uint64_t word) const {
    const std::uint64_t hash = (word & 0xFFFFFFFF) * low_ + (word >> 32) * high_;
    return hash ^ hash >> 32;
  }

  // Of two words at once. Each is mixed with the key before they are multiplied: which words give
  // the same product can't be told without it.
  std::uint64_t scramble(std::uint64_t first, std::uint64_t second) const {
    __extension__ using tWide = unsigned __int128;
    const tWide product = tWide{first ^ low_} * (second ^ high_);
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
  }

 private:
  static std::uint64_t mix(std::uint64_t value) {
    value += 0x9E3779B97F4A7C15;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
    return value ^ (value >> 31);
  }

  std::uint64_t low_;
  std::uint64_t high_;
};

}  // namespace varmex::inline nOSTRELS100

#endif
