#include "tests/support/testMachine.h"

#include <fstream>
#include <stdexcept>

namespace test {

void tTestMachine::write(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
  if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

void tTestMachine::setRegistryText(const std::string& key, const std::string& name,
                                   const std::string& text) {
  setRegistryValue(key, name, 1, text + '\0');
}

void tTestMachine::setRegistryNumber(const std::string& key, const std::string& name,
                                     std::uint32_t number) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift & 0xFF);
  setRegistryValue(key, name, 4, bytes);
}

}  // namespace test
