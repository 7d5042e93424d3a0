#ifndef OSTREL_QUARKS_CONTENTDIGEST_H
#define OSTREL_QUARKS_CONTENTDIGEST_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace varmex::inline nOSTRELS100 {

// What stands for a content in comparisons within this process.
struct tContentDigest {
  std::uint64_t size = 0;
  std::uint64_t halves[2] = {0, 0};

  bool operator==(const tContentDigest&) const = default;
};

// Works out the digest of a content that comes in parts: two words of 61 bits each, under a key
// that the process draws once and tells nobody. Whatever two contents of one size somebody chooses
// without the key, the chance that they have one digest is about 2^-64: so many keys of the NH
// family of hashes let a block of the two come to the same in both halves. The blocks' hashes are
// then the coefficients of a polynomial modulo 2^61 - 1, taken at a secret place.
class tContentDigester {
 public:
  // Every part but the last is a multiple of this.
  static constexpr std::size_t kBlock = 4096;

  // False where the key could not be drawn, or another thread takes long to draw it: there are no
  // digests to be had then.
  static bool isReady();

  void add(std::string_view part);
  tContentDigest digest() const { return digest_; }

 private:
  void addBlock(const char* block, std::size_t size);

  tContentDigest digest_;
};

}  // namespace varmex::inline nOSTRELS100

#endif
