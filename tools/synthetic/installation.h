#ifndef TOOLS_SYNTHETIC_INSTALLATION_H
#define TOOLS_SYNTHETIC_INSTALLATION_H

#include <cstdint>
#include <string>
#include <vector>

namespace synthetic {

enum class tChassisKind {
  express,  // PXI Express: in both files, with hybrid slots that hold classic modules
  classic,  // PXI: in pxisys.ini alone
};

inline constexpr std::size_t kMostChassis = 255;
inline constexpr std::uint32_t kFewestSlots = 2;
inline constexpr std::uint32_t kMostSlots = 18;

// A chassis to be made.
struct tPlan {
  tChassisKind kind = tChassisKind::express;
  std::uint32_t slots = kMostSlots;
  std::uint32_t modules = kMostSlots;  // at most so many, from the left
};

// A function of a module, where the description says that it is.
struct tFunction {
  std::uint32_t chassis;
  std::uint32_t slot;
  std::uint32_t bus;
  std::uint32_t device;
  std::uint32_t function;
  std::uint32_t lanes;       // of its link; 0 for classic modules
  std::uint32_t bridgedBus;  // behind it, where it is a bridge, else 0
};

// The content of the two description files, and the functions that they tell of.
struct tTexts {
  std::string pxiSys;
  std::string pxieSys;  // empty when all chassis are classic
  std::vector<tFunction> functions = {};
};

// The description of an installation that does not exist, in the form and with the line lengths
// that a resource manager writes: modules in most slots, trigger buses of at most eight slots,
// bridges between them, a star trigger, and dstar sets in PXI Express chassis. The chassis are
// numbered from 1 on. The same plans give the same texts. All PCI addresses lie within the 256
// buses of 32 devices of a machine: each module has a bus to itself as long as there are enough,
// and in a larger installation modules share them. Throws std::invalid_argument for a number of
// chassis or slots outside the ranges above, and for more modules than there are addresses.
tTexts makeInstallation(const std::vector<tPlan>& plans);

// Writes both files, an empty one for an empty text. Throws std::runtime_error, with the path in
// its text, when a file can't be written.
void writeInstallation(const tTexts& texts, const std::string& pxiSysPath,
                       const std::string& pxieSysPath);

}  // namespace synthetic

#endif
