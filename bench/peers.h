#ifndef BENCH_PEERS_H
#define BENCH_PEERS_H

#include <memory>
#include <string>
#include <vector>

namespace bench {

// A store filled from a description file that answers look-ups.
class iStore {
 public:
  virtual ~iStore() = default;

  // The text of an item, empty when the store does not hold it.
  virtual std::string find(const std::string& section, const std::string& item) const = 0;
};

// A reader of description files: ours, or one of the distribution's.
struct tReader {
  const char* name;
  std::unique_ptr<iStore> (*load)(const char* path);  // null on failure
};

// Ours first.
const std::vector<tReader>& readers();

}  // namespace bench

#endif
