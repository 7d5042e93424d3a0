// Reads the input as a saved installation. What is accepted holds nothing but the files of a
// description, is written and read again as the same, and gives a registry text that can be read.

#include <algorithm>
#include <cstring>
#include <iterator>
#include <stdexcept>

#include "corpxiTools/fileSystem/posix/registryText.h"
#include "fuzz/support.h"
#include "tools/varmex/saved/savedFile.h"

namespace {

using namespace tool;

bool isSame(const std::vector<tFileContent>& a, const std::vector<tFileContent>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const auto& left, const auto& right) {
                      return left.path == right.path && left.bytes == right.bytes;
                    });
}

bool isSame(const tRegistryValues& a, const tRegistryValues& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const auto& left, const auto& right) {
                      return left.key == right.key && left.name == right.name &&
                             left.type == right.type && left.data == right.data;
                    });
}

void readRegistryText(const std::string& text) {
  varmex::tFileBytes content;
  content.size = text.size();
  content.bytes = std::make_unique<char[]>(text.size());
  std::memcpy(content.bytes.get(), text.data(), text.size());
  const varmex::tRegistryText registry(std::move(content));
  for (const std::string_view key : registry.subkeys("HKEY_LOCAL_MACHINE")) {
    fuzz::require(registry.findKey("HKEY_LOCAL_MACHINE\\" + std::string(key)).has_value());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const tSavedInstallation saved = readSaved({reinterpret_cast<const char*>(data), size});
    for (const tFileContent& file : saved.files) {
      fuzz::require(std::find(std::begin(kSavedPaths), std::end(kSavedPaths), file.path) !=
                    std::end(kSavedPaths));
    }
    const tSavedInstallation again = readSaved(textOf(saved));
    fuzz::require(isSame(saved.files, again.files) && isSame(saved.registry, again.registry) &&
                  jsonOfPciTree(saved.pci.value_or(tPciTree())) ==
                      jsonOfPciTree(again.pci.value_or(tPciTree())) &&
                  isSame(saved.chassisFiles, again.chassisFiles) && saved.host == again.host);
    readRegistryText(registryTextOf(saved.registry));
  } catch (const std::runtime_error& refusal) {
    fuzz::require(*refusal.what() != '\0');
  }
  return 0;
}
