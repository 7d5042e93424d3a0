#ifndef CORPXITOOLS_FILESYSTEM_POSIX_REGISTRYTEXT_H
#define CORPXITOOLS_FILESYSTEM_POSIX_REGISTRYTEXT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace varmex::inline nCORPXITOOLS000 {

struct tRegistryTextValue {
  std::string name;  // empty for the key's default value
  std::uint32_t type;
  std::string data;  // as a narrow query gives it, terminators included
};

struct tRegistryTextKey {
  std::vector<tRegistryTextValue> values;  // in the order of the text
  std::vector<std::string> subkeys;        // direct ones, in the order of the text
};

// Reads the key `path` ("HKEY_LOCAL_MACHINE\SOFTWARE\...") out of a registry editor's export, in
// UTF-16LE with its mark or in UTF-8. False when the text does not hold the key or is no export of
// version 5.00. Malformed lines are passed over; a value given twice has its last content. Text
// values of the export come out in UTF-8.
bool readRegistryText(std::string_view text, std::string_view path, tRegistryTextKey& key);

// Whether two names of keys or values are the same without regard to case.
bool sameRegistryName(std::string_view a, std::string_view b);

}  // namespace varmex::inline nCORPXITOOLS000

#endif
