// Loads the input as a description file, finds everything that it holds and reads it in every way.

#include "corpxiTools/iniFile.h"
#include "fuzz/support.h"

namespace {

using namespace varmex;

void readAll(const tIniFile& file) {
  for (const tIniSection& section : file.store().sections()) {
    const std::string name(section.nameView());
    fuzz::require(file.hasSection(name));
    for (std::size_t n = 0; n < section.count; ++n) {
      const std::string item(section.items[n].nameView());
      // An entry may hide behind an earlier one of its name, but the name is found.
      if (file.findSection(name) == &section) fuzz::require(file.hasItem(&section, item));
      const auto tell = [](const auto& result) {
        if (!result) fuzz::require(!result.refusal().message().empty());
      };
      tNumbers numbers;
      tell(tIniFile::numberOf(section, section.items[n]));
      tell(tIniFile::unsignedOf(section, section.items[n]));
      tell(tIniFile::appendNumbersOf(section, section.items[n], numbers));
      tell(file.getString(file.placeOf(tShortName(item)), "x"));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::tMemoryFile memory("ini");
  memory.write(data, size);
  tIniFile file;
  try {
    if (file.read(memory.path())) readAll(file);
  } catch (const tIniException&) {
    // An encoding that is not read.
  }
  return 0;
}
