// Reads keys out of the input as a registry editor's export.

#include <algorithm>
#include <string>

#include "corpxiTools/fileSystem/posix/registryText.h"
#include "fuzz/support.h"

namespace {

using namespace varmex;

// Everything that is listed is found under its name.
void look(const tRegistryText& text, const std::string& path, int depth) {
  const auto key = text.findKey(path);
  for (const tRegistryTextValue& value :
       key ? key->values() : std::span<const tRegistryTextValue>()) {
    fuzz::require(key->find(value.name) == &value && !value.isDeletion());
  }
  const auto subkeys = text.subkeys(path);
  fuzz::require(key || subkeys.empty());
  for (const std::string_view name : subkeys) {
    const std::string below = path + '\\' + std::string(name);
    fuzz::require(!name.empty() && text.findKey(below));
    if (depth > 0) look(text, below, depth - 1);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tFileBytes content{std::make_unique_for_overwrite<char[]>(size), size};
  std::copy(data, data + size, content.bytes.get());
  const tRegistryText text(std::move(content));
  for (const char* root : {"HKEY_LOCAL_MACHINE", "HKEY_CLASSES_ROOT"}) look(text, root, 4);
  return 0;
}
