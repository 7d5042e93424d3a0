// Reads keys out of the input as a registry editor's export.

#include "corpxiTools/fileSystem/posix/registryText.h"
#include "fuzz/support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  for (const char* path : {"HKEY_LOCAL_MACHINE", "HKEY_LOCAL_MACHINE\\SOFTWARE",
                           "HKEY_LOCAL_MACHINE\\SOFTWARE\\PXISA\\CurrentVersion"}) {
    varmex::tRegistryTextKey key;
    varmex::readRegistryText(text, path, key);
    for (const std::string& subkey : key.subkeys) {
      varmex::tRegistryTextKey below;
      fuzz::require(varmex::readRegistryText(text, std::string(path) + '\\' + subkey, below));
    }
  }
  return 0;
}
