#ifndef BENCH_MACHINE_H
#define BENCH_MACHINE_H

#include <array>
#include <cstdint>
#include <string>

namespace bench {

// Sizes of the installations, in chassis of 18 slots.
inline constexpr std::array<std::uint32_t, 3> kSizes{1, 16, 255};

// A synthetic installation in a temporary folder that serves as VARMEX_FSROOT and goes away with
// the object.
class tMachine {
 public:
  explicit tMachine(std::uint32_t chassis);
  tMachine(const tMachine&) = delete;
  tMachine& operator=(const tMachine&) = delete;
  ~tMachine();

  const std::string& root() const { return root_; }
  std::string pxiSysPath() const { return root_ + "/etc/pxi/pxisys.ini"; }
  std::string pxieSysPath() const { return root_ + "/etc/pxi/pxiesys.ini"; }
  std::string configurationPath() const { return root_ + "/var/lib/PXISA/configuration.ini"; }

 private:
  std::string root_;
};

// The machine of that size, made at the first call and kept until the program ends.
const tMachine& machineOf(std::uint32_t chassis);

std::string readText(const std::string& path);

}  // namespace bench

#endif
