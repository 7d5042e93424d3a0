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

// Another thread draws them. It takes some microseconds, or for ever where a fork has lost it.
bool awaitKeys() {
  constexpr int kMostTurns = 1000;
  for (int turn = 0; turn < kMostTurns; ++turn) {
    if (keyState.load(std::memory_order_acquire) != kDrawing) break;
    _mm_pause();
  }
  return keyState.load(std::memory_order_acquire) == kReady;
}

// Without a lock, which a fork could leave behind in its child.
bool drawKeys() {
  tKeyState state = kNoKey;
  if (!keyState.compare_exchange_strong(state, kDrawing, std::memory_order_acquire)) {
    return awaitKeys();
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

// A block is hashed in steps of as many words. The last one of a content may have fewer steps.
constexpr std::size_t kStepWords = 4 * kApart;
constexpr std::size_t kStep = kStepWords * sizeof(std::uint32_t);

struct tBlockHash {
  std::uint64_t halves[2];
};

__m128i multiplyPairs(__m128i left, __m128i right, const std::uint32_t* key) {
  const auto wordsAt = [](const std::uint32_t* words) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(words));
  };
  const __m128i a = _mm_add_epi32(left, wordsAt(key));
  const __m128i b = _mm_add_epi32(right, wordsAt(key + kApart));
  return _mm_add_epi64(_mm_mul_epu32(a, b),
                       _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32)));
}

tBlockHash hashBlock(const char* block, std::size_t words) {
  __m128i sums[2] = {_mm_setzero_si128(), _mm_setzero_si128()};
  for (std::size_t word = 0; word < words; word += 2 * kApart) {
    for (std::size_t lane = word; lane < word + kApart; lane += 4) {
      const auto* const bytes =
          reinterpret_cast<const __m128i*>(block + lane * sizeof(std::uint32_t));
      const __m128i left = _mm_loadu_si128(bytes);
      const __m128i right = _mm_loadu_si128(bytes + kApart / 4);
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

[[gnu::target("avx2")]] inline __m256i multiplyPairsAvx2(__m256i left, __m256i right,
                                                         const std::uint32_t* key) {
  const __m256i* const words = reinterpret_cast<const __m256i*>(key);
  const __m256i a = _mm256_add_epi32(left, _mm256_load_si256(words));
  const __m256i b = _mm256_add_epi32(right, _mm256_load_si256(words + 1));
  return _mm256_add_epi64(_mm256_mul_epu32(a, b),
                          _mm256_mul_epu32(_mm256_srli_epi64(a, 32), _mm256_srli_epi64(b, 32)));
}

[[gnu::target("avx2")]] inline void addPairsAvx2(__m256i (&sums)[2], const char* block,
                                                 std::size_t word) {
  const auto* const bytes = reinterpret_cast<const __m256i*>(block + word * sizeof(std::uint32_t));
  __m256i left = _mm256_loadu_si256(bytes);
  __m256i right = _mm256_loadu_si256(bytes + 1);
  // Compilers would load them again for the other half.
  asm("" : "+x"(left), "+x"(right));
  sums[0] = _mm256_add_epi64(sums[0], multiplyPairsAvx2(left, right, keys[0].words + word));
  sums[1] = _mm256_add_epi64(sums[1], multiplyPairsAvx2(left, right, keys[1].words + word));
}

// The same in half the steps.
[[gnu::target("avx2")]] tBlockHash hashBlockAvx2(const char* block, std::size_t words) {
  __m256i sums[2] = {_mm256_setzero_si256(), _mm256_setzero_si256()};
  for (std::size_t word = 0; word < words; word += kStepWords) {
    addPairsAvx2(sums, block, word);
    addPairsAvx2(sums, block, word + kStepWords / 2);
  }
  tBlockHash hash{};
  for (std::size_t half = 0; half < 2; ++half) {
    std::uint64_t lanes[4];
    std::memcpy(lanes, &sums[half], sizeof lanes);
    hash.halves[half] = lanes[0] + lanes[1] + lanes[2] + lanes[3];
  }
  return hash;
}

tBlockHash hashBlockHere(const char* block, std::size_t words) {
  return __builtin_cpu_supports("avx2") ? hashBlockAvx2(block, words) : hashBlock(block, words);
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
  for (; part.size() >= kBlock; part.remove_prefix(kBlock)) addBlock(part.data(), kBlock);
  if (part.empty()) return;
  // The size tells a content apart from one that has the zeros of its own.
  char last[kBlock];
  const std::size_t size = (part.size() + kStep - 1) / kStep * kStep;
  std::memcpy(last, part.data(), part.size());
  std::memset(last + part.size(), 0, size - part.size());
  addBlock(last, size);
}

void tContentDigester::addBlock(const char* block, std::size_t size) {
  const tBlockHash hash = hashBlockHere(block, size / sizeof(std::uint32_t));
  for (std::size_t half = 0; half < 2; ++half) {
    const tHalfKey& key = keys[half];
    const std::uint64_t word = hash.halves[half];
    digest_.halves[half] =
        reduce(tWide{digest_.halves[half]} * key.place + tWide{word & 0xFFFFFFFF} * key.factors[0] +
               tWide{word >> 32} * key.factors[1]);
  }
}

}  // namespace varmex::inline nOSTRELS100
