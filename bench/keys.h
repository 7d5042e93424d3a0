#ifndef BENCH_KEYS_H
#define BENCH_KEYS_H

#include <string>
#include <vector>

namespace bench {

struct tKey {
  std::string section;
  std::string item;
};

// All items of a description file, in an order that is shuffled and always the same.
std::vector<tKey> shuffledKeys(const std::string& path);

}  // namespace bench

#endif
