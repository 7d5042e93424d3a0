#ifndef CORPXITOOLS_FILESYSTEM_POSIX_REGISTRYENTRIES_H
#define CORPXITOOLS_FILESYSTEM_POSIX_REGISTRYENTRIES_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "corpxiTools/fileSystem/fileBytes.h"

namespace varmex::inline nCORPXITOOLS000 {

struct tRegistryTextValue {
  std::string_view name;  // empty for the key's default value
  std::uint32_t type = 0;
  std::string_view data;  // as a narrow query gives it, terminators included

  // Takes the value of that name away. It has no data, not even empty ones.
  bool isDeletion() const { return data.data() == nullptr; }
};

// A header and what stands below it.
struct tRegistrySection {
  std::string_view path;  // begins with a root's name; without repeated or trailing backslashes
  std::size_t order;      // in the text, from 1
  std::size_t firstValue;
  std::size_t valueCount;
  bool isDeletion;  // takes the key away, and those below it
};

// The entries of a registry editor's export in their order, malformed ones left out.
struct tRegistryEntries {
  std::vector<tRegistrySection> sections;
  std::vector<tRegistryTextValue> values;
};

// `content` holds the names and data of the entries afterwards: it is cut up in place. Throws
// std::bad_alloc.
tRegistryEntries readRegistryEntries(tFileBytes& content);

}  // namespace varmex::inline nCORPXITOOLS000

#endif
