#ifndef BENCH_MACHINE_H
#define BENCH_MACHINE_H

#include <array>
#include <cstdint>
#include <string>

#include "tools/synthetic/installation.h"

namespace bench {

// Sizes of the installations, in chassis of 18 slots.
inline constexpr std::array<std::uint32_t, 3> kSizes{1, 16, 255};

// The description of that many chassis, ended by a section that says `remark`.
synthetic::tTexts describe(std::uint32_t chassis, const std::string& remark);

// A description in a temporary folder that serves as VARMEX_FSROOT and goes away with the object.
class tMachine {
 public:
  explicit tMachine(const synthetic::tTexts& texts);
  tMachine(const tMachine&) = delete;
  tMachine& operator=(const tMachine&) = delete;
  ~tMachine();

  // Where the library looks from now on.
  void use() const;

  const std::string& root() const { return root_; }
  std::string pxiSysPath() const { return root_ + "/etc/pxi/pxisys.ini"; }
  std::string pxieSysPath() const { return root_ + "/etc/pxi/pxiesys.ini"; }
  std::string configurationPath() const { return root_ + "/var/lib/PXISA/configuration.ini"; }

 private:
  std::string root_;
};

// The machine of that size, made at the first call and kept until the program ends. The second one
// is like it but for a remark: no session of the first shares with a session of the second.
const tMachine& machineOf(std::uint32_t chassis);
const tMachine& aloneMachineOf(std::uint32_t chassis);

std::string readText(const std::string& path);

}  // namespace bench

#endif
