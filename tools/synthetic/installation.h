#ifndef TOOLS_SYNTHETIC_INSTALLATION_H
#define TOOLS_SYNTHETIC_INSTALLATION_H

#include <cstdint>
#include <string>

namespace synthetic {

enum class tChassisKind {
  express,  // PXI Express: in both files, with hybrid slots that hold classic modules
  classic,  // PXI: in pxisys.ini alone
};

// What to make. Outside the ranges makeInstallation throws std::invalid_argument.
struct tParameters {
  static constexpr std::uint32_t kMostChassis = 255;
  static constexpr std::uint32_t kFewestSlots = 2;
  static constexpr std::uint32_t kMostSlots = 18;

  std::uint32_t chassis = 1;  // from 1; they are numbered from 1 on
  std::uint32_t slots = kMostSlots;
  tChassisKind kind = tChassisKind::express;
};

// The content of the two description files.
struct tTexts {
  std::string pxiSys;
  std::string pxieSys;  // empty when all chassis are classic
};

// The description of an installation that does not exist, in the form and with the line lengths
// that a resource manager writes: modules in most slots, trigger buses of at most eight slots,
// bridges between them, a star trigger, and dstar sets in PXI Express chassis. The same parameters
// give the same texts. No two modules share a PCI bus, so the bus numbers of a large installation
// go beyond the 255 of a real machine.
tTexts makeInstallation(const tParameters& parameters);

// Writes both files, an empty one for an empty text. Throws std::runtime_error, with the path in
// its text, when a file can't be written.
void writeInstallation(const tTexts& texts, const std::string& pxiSysPath,
                       const std::string& pxieSysPath);

}  // namespace synthetic

#endif
