#include "bench/machine.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>

namespace bench {

namespace {

std::string makeTemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "varmex-bench-XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error("can't make " + name);
  return name;
}

}  // namespace

synthetic::tTexts describe(std::uint32_t chassis, const std::string& remark) {
  auto texts = synthetic::makeInstallation(std::vector<synthetic::tPlan>(chassis));
  texts.pxiSys += "; " + remark + '\n';
  texts.pxieSys += "; " + remark + '\n';
  return texts;
}

tMachine::tMachine(const synthetic::tTexts& texts) : root_(makeTemporaryFolder()) {
  std::filesystem::create_directories(root_ + "/etc/pxi");
  std::filesystem::create_directories(root_ + "/var/lib/PXISA");
  synthetic::writeInstallation(texts, pxiSysPath(), pxieSysPath());
  std::ofstream(configurationPath()) << "; locked\n";
}

tMachine::~tMachine() {
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
}

void tMachine::use() const { setenv("VARMEX_FSROOT", root_.c_str(), 1); }

const tMachine& machineOf(std::uint32_t chassis) {
  static std::map<std::uint32_t, tMachine> machines;
  return machines.try_emplace(chassis, describe(chassis, "one of several")).first->second;
}

const tMachine& aloneMachineOf(std::uint32_t chassis) {
  static std::map<std::uint32_t, tMachine> machines;
  return machines.try_emplace(chassis, describe(chassis, "on its own")).first->second;
}

std::string readText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace bench
