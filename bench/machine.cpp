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

using tMachines = std::map<std::uint32_t, tMachine>;

const tMachine& findOrMake(tMachines& machines, std::uint32_t chassis, const char* remark) {
  const auto found = machines.find(chassis);
  if (found != machines.end()) return found->second;
  return machines.try_emplace(chassis, describe(chassis, remark)).first->second;
}

}  // namespace

synthetic::tTexts describe(std::uint32_t chassis, const std::string& remark) {
  auto texts = synthetic::makeInstallation(std::vector<synthetic::tPlan>(chassis));
  // Not every reader knows comments.
  const std::string section = "\n[Remark]\nText=" + remark + '\n';
  texts.pxiSys += section;
  texts.pxieSys += section;
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
  static tMachines machines;
  return findOrMake(machines, chassis, "one of several");
}

const tMachine& aloneMachineOf(std::uint32_t chassis) {
  static tMachines machines;
  return findOrMake(machines, chassis, "on its own");
}

std::string readText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace bench
