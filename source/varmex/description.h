#ifndef SOURCE_VARMEX_DESCRIPTION_H
#define SOURCE_VARMEX_DESCRIPTION_H

#include <cstdint>
#include <string_view>

#include "corpxiTools/iniFile.h"
#include "source/varmex/chassisTables.h"

namespace varmex {

// A section that either file may hold, in each of them. Null where a file has none.
struct tSectionPair {
  const tIniSection* classic = nullptr;
  const tIniSection* express = nullptr;

  explicit operator bool() const { return classic || express; }
};

struct tDescriptionFiles {
  tIniFile pxiSys;
  tIniFile pxieSys;

  tSectionPair sections(std::string_view name) const {
    return {pxiSys.findSection(name), pxieSys.findSection(name)};
  }

  // The same, at less cost for what stands not far behind earlier sections, if there are some.
  tSectionPair sections(const tNumberedName& name, const tSectionPair& earlier) const {
    return {pxiSys.findSectionBehind(earlier.classic, name),
            pxieSys.findSectionBehind(earlier.express, name)};
  }
};

// The two files and what has been worked out of them. Items keep a reference to it.
struct tDescription : tDescriptionFiles {
  // The chassis that each file lists, in file order.
  tResult<tNumbers> pxiSysChassisNumbers() const;
  tResult<tNumbers> pxieSysChassisNumbers() const;

  // What has been worked out of a chassis that one of the files has.
  const tChassisTables& tablesOf(std::uint32_t chassis) const;

 private:
  tOnceMade<tTablesByChassis> tables_;
};

// Section names, with their numbers in plain decimal.
inline tShortName chassisKey(std::uint32_t chassis) { return {"Chassis", chassis}; }

// The name of what a chassis has by that word and number, as in "Chassis1Slot2".
inline tShortName chassisKey(std::uint32_t chassis, std::string_view word, std::uint32_t number) {
  return chassisKey(chassis).add(word).add(number);
}

inline tShortName slotKey(std::uint32_t chassis, std::uint32_t slot) {
  return chassisKey(chassis, "Slot", slot);
}

// The numbers from `first` on in their order, each at its first place alone. Walks that look for
// the first match, or that enter everything they meet, answer the same for it, and a list that
// repeats itself costs no more than its length.
void dropRepeats(tNumbers& numbers, std::size_t first = 0);

// The numbers of a list that must be there, each once.
tResult<tNumbers> listedOnce(const tIniFile& file, const tIniPlace& place, tLiteral list);

// The numbers of a list, each of them once, behind those that are in `numbers`. A refusal leaves a
// part of them there.
tResult<> appendEachOnce(const tIniSection& section, const tIniItem& list, tNumbers& numbers);

// A number of a file as the slots and lines are numbered, negative ones modulo 2^32.
inline tResult<std::uint32_t> asUnsigned(const tResult<std::int32_t>& number) {
  if (!number) return number.refusal();
  return static_cast<std::uint32_t>(*number);
}

// Into ascending order, each once.
void sortWithoutRepeats(tNumbers& numbers);

}  // namespace varmex

#endif
