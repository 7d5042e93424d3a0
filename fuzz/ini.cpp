// Loads the input as a description file, finds everything that it holds and reads it in every way.

#include "corpxiTools/iniFile.h"
#include "fuzz/support.h"

namespace {

using namespace varmex;

template <class Read>
void ignoreFaults(Read read) {
  try {
    read();
  } catch (const tIniException&) {
  }
}

void readAll(const tIniFile& file) {
  for (const tIniSection& section : file.store().sections()) {
    const std::string name(section.nameView());
    fuzz::require(file.hasSection(name));
    for (std::size_t n = 0; n < section.count; ++n) {
      const std::string item(section.items[n].nameView());
      // An entry may hide behind an earlier one of its name, but the name is found.
      if (file.store().findSection(name) == &section) fuzz::require(file.hasItem(name, item));
      ignoreFaults([&] { file.getNumber(name, item); });
      ignoreFaults([&] { file.getUnsigned(name, item); });
      ignoreFaults([&] { file.getNumberList(name, item); });
      ignoreFaults([&] { file.getString(name, item + "x"); });
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::tMemoryFile memory("ini");
  memory.write(data, size);
  tIniFile file;
  ignoreFaults([&] {
    if (file.read(memory.path())) readAll(file);
  });
  return 0;
}
