#include "ostrel/quarks/contentDigest.h"

#include <immintrin.h>

#include <atomic>
#include <cstring>

#include "ostrel/quarks/randomBytes.h"

namespace varmex::inline nOSTRELS100 {

namespace {

constexpr std::size_t kWords = tContentDigester::kBlock / sizeof(std::uint32_t);

// Of either half of the digest: what is added to a block's words, and the polynomial's place with
// the factors of a block hash's two words.
struct tHalfKey {
  alignas(32) std::uint32_t words[kWords];
  std::uint64_t place;
  std::uint64_t factors[2];
};

constexpr std::uint64_t kPrime = (std::uint64_t{1} << 61) - 1;

enum tKeyState { kNoKey, kDrawing, kReady };

constinit std::atomic<tKeyState> keyState{kNoKey};
constinit tHalfKey keys[2]{};

// Without a lock, which a fork could leave behind in its child: a thread that comes while another
// one draws goes without.
bool drawKeys() {
  tKeyState state = kNoKey;
  if (!keyState.compare_exchange_strong(state, kDrawing, std::memory_order_acquire)) {
    return state == kReady;
  }
  const bool drawn = fillWithRandomBytes(keys, sizeof keys);
  for (tHalfKey& key : keys) {
    key.place &= kPrime;
    for (std::uint64_t& factor : key.factors) factor &= kPrime;
  }
  keyState.store(drawn ? kReady : kNoKey, std::memory_order_release);
  return drawn;
}

// NH: words of the block are added to words of the key, and the products of pairs of the sums are
// added up. A pair stands as far apart as a vector is long: which of the block's words are paired
// makes no difference to its chances, but must be the same for all.
constexpr std::size_t kApart = 8;

struct tBlockHash {
  std::uint64_t halves[2];
};

__m128i multiplyPairs(const char* left, const char* right, const std::uint32_t* key) {
  const auto sum = [](const char* bytes, const std::uint32_t* words) {
    return _mm_add_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)),
                         _mm_load_si128(reinterpret_cast<const __m128i*>(words)));
  };
  const __m128i a = sum(left, key);
  const __m128i b = sum(right, key + kApart);
  return _mm_add_epi64(_mm_mul_epu32(a, b),
                       _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32)));
}

tBlockHash hashBlock(const char* block) {
  __m128i sums[2] = {_mm_setzero_si128(), _mm_setzero_si128()};
  for (std::size_t word = 0; word < kWords; word += 2 * kApart) {
    for (std::size_t lane = word; lane < word + kApart; lane += 4) {
      const char* const left = block + lane * sizeof(std::uint32_t);
      const char* const right = left + kApart * sizeof(std::uint32_t);
      sums[0] = _mm_add_epi64(sums[0], multiplyPairs(left, right, keys[0].words + lane));
      sums[1] = _mm_add_epi64(sums[1], multiplyPairs(left, right, keys[1].words + lane));
    }
  }
  tBlockHash hash{};
  for (std::size_t half = 0; half < 2; ++half) {
    std::uint64_t lanes[2];
    std::memcpy(lanes, &sums[half], sizeof lanes);
    hash.halves[half] = lanes[0] + lanes[1];
  }
  return hash;
}

[[gnu::target("avx2")]] inline __m256i multiplyPairsAvx2(const char* block,
                                                         const std::uint32_t* key) {
  const __m256i* const bytes = reinterpret_cast<const __m256i*>(block);
  const __m256i* const words = reinterpret_cast<const __m256i*>(key);
  const __m256i a = _mm256_add_epi32(_mm256_loadu_si256(bytes), _mm256_load_si256(words));
  const __m256i b = _mm256_add_epi32(_mm256_loadu_si256(bytes + 1), _mm256_load_si256(words + 1));
  return _mm256_add_epi64(_mm256_mul_epu32(a, b),
                          _mm256_mul_epu32(_mm256_srli_epi64(a, 32), _mm256_srli_epi64(b, 32)));
}

// The same in half the steps.
[[gnu::target("avx2")]] tBlockHash hashBlockAvx2(const char* block) {
  __m256i sums[2] = {_mm256_setzero_si256(), _mm256_setzero_si256()};
  for (std::size_t word = 0; word < kWords; word += 2 * kApart) {
    const char* const place = block + word * sizeof(std::uint32_t);
    sums[0] = _mm256_add_epi64(sums[0], multiplyPairsAvx2(place, keys[0].words + word));
    sums[1] = _mm256_add_epi64(sums[1], multiplyPairsAvx2(place, keys[1].words + word));
  }
  tBlockHash hash{};
  for (std::size_t half = 0; half < 2; ++half) {
    std::uint64_t lanes[4];
    std::memcpy(lanes, &sums[half], sizeof lanes);
    hash.halves[half] = lanes[0] + lanes[1] + lanes[2] + lanes[3];
  }
  return hash;
}

tBlockHash hashBlockHere(const char* block) {
  return __builtin_cpu_supports("avx2") ? hashBlockAvx2(block) : hashBlock(block);
}

__extension__ using tWide = unsigned __int128;

std::uint64_t reduce(tWide value) {
  const std::uint64_t sum =
      static_cast<std::uint64_t>(value & kPrime) + static_cast<std::uint64_t>(value >> 61);
  const std::uint64_t once = (sum & kPrime) + (sum >> 61);
  return once == kPrime ? 0 : once;
}

}  // namespace

bool tContentDigester::isReady() {
  return keyState.load(std::memory_order_acquire) == kReady || drawKeys();
}

void tContentDigester::add(std::string_view part) {
  digest_.size += part.size();
  for (; part.size() >= kBlock; part.remove_prefix(kBlock)) addBlock(part.data());
  if (part.empty()) return;
  char last[kBlock] = {};
  std::memcpy(last, part.data(), part.size());
  addBlock(last);
}

void tContentDigester::addBlock(const char* block) {
  const tBlockHash hash = hashBlockHere(block);
  for (std::size_t half = 0; half < 2; ++half) {
    const tHalfKey& key = keys[half];
    const std::uint64_t word = hash.halves[half];
    digest_.halves[half] =
        reduce(tWide{digest_.halves[half]} * key.place + tWide{word & 0xFFFFFFFF} * key.factors[0] +
               tWide{word >> 32} * key.factors[1]);
  }
}

}  // namespace varmex::inline nOSTRELS100
