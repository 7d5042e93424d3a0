// Whether every reader finds what ours finds: one that does not would be timed for other work.

#include <cstdio>
#include <exception>
#include <stdexcept>

#include "bench/keys.h"
#include "bench/machine.h"
#include "bench/peers.h"

namespace {

using bench::tKey;
using bench::tReader;

// Distributions build inih for lines of less than 200 bytes; the list of 255 chassis is longer.
constexpr std::size_t kLongestCompared = 150;

void check(const tReader& reader, const std::string& path) {
  const auto ours = bench::readers().front().load(path.c_str());
  const auto theirs = reader.load(path.c_str());
  if (!ours || !theirs) throw std::runtime_error(std::string(reader.name) + " can't load " + path);
  const auto bare = [](std::string value) {
    std::erase(value, '"');
    return value;
  };
  for (const tKey& key : bench::shuffledKeys(path)) {
    const std::string value = ours->find(key.section, key.item);
    if (value.size() > kLongestCompared) continue;
    if (value != bare(theirs->find(key.section, key.item))) {
      throw std::runtime_error(std::string(reader.name) + " differs in " + key.section + ", " +
                               key.item);
    }
  }
}

}  // namespace

int main() {
  try {
    for (const std::uint32_t chassis : bench::kSizes) {
      const bench::tMachine& machine = bench::machineOf(chassis);
      for (const tReader& reader : bench::readers()) {
        check(reader, machine.pxieSysPath());
        check(reader, machine.pxiSysPath());
      }
    }
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "varmex_bench_check: %s\n", exception.what());
    return 1;
  }
}
