#include "bench/machine.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>

#include "tools/synthetic/installation.h"

namespace bench {

namespace {

std::string makeTemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "varmex-bench-XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error("can't make " + name);
  return name;
}

}  // namespace

tMachine::tMachine(std::uint32_t chassis) : root_(makeTemporaryFolder()) {
  std::filesystem::create_directories(root_ + "/etc/pxi");
  std::filesystem::create_directories(root_ + "/var/lib/PXISA");
  const std::vector<synthetic::tPlan> plans(chassis);
  synthetic::writeInstallation(synthetic::makeInstallation(plans), pxiSysPath(), pxieSysPath());
  std::ofstream(configurationPath()) << "; locked\n";
}

tMachine::~tMachine() {
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
}

const tMachine& machineOf(std::uint32_t chassis) {
  static std::map<std::uint32_t, tMachine> machines;
  return machines.try_emplace(chassis, chassis).first->second;
}

std::string readText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace bench
