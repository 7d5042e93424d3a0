#include "bench/keys.h"

#include <algorithm>
#include <random>

#include "corpxiTools/iniStore.h"

namespace bench {

std::vector<tKey> shuffledKeys(const std::string& path) {
  varmex::tIniStore store;
  store.load(path.c_str());
  std::vector<tKey> keys;
  for (const varmex::tIniSection& section : store.sections()) {
    for (std::size_t n = 0; n < section.count; ++n) {
      keys.push_back({section.name, section.items[n].name});
    }
  }
  std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
  return keys;
}

}  // namespace bench
