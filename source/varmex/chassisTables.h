#ifndef SOURCE_VARMEX_CHASSISTABLES_H
#define SOURCE_VARMEX_CHASSISTABLES_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ostrel/quarks/numberMap.h"
#include "ostrel/quarks/onceMade.h"
#include "ostrel/quarks/result.h"

namespace varmex {

// What one walk over the lists of a chassis comes to for every slot. A walk for one slot would end
// at its first match, so a refusal on the way counts only for slots that no match came ahead of.
template <class Match>
struct tSlotTable {
  tNumberMap<Match> matches;    // by slot number, of each the first
  std::optional<tRefusal> end;  // what ended the walk ahead of the lists' end

  const Match* find(std::uint32_t slot) const { return matches.find(slot); }
};

template <class Table>
Table endedBy(Table& table, const tRefusal& refusal) {
  table.end = refusal;
  return std::move(table);
}

inline constexpr std::uint32_t kNoLine = 0xFFFFFFFF;

// Where a slot stands on a point-to-point trigger.
struct tStarMatch {
  std::uint32_t number;
  std::uint32_t line;  // kNoLine when the slot holds none
  bool isController;
  bool isRefused;  // the controller could not be read
};

// A dstar set's controller that can't be read refuses the slots on its lines.
struct tStarTable : tSlotTable<tStarMatch> {
  bool hasList = true;                      // of the triggers
  tNumberMap<tRefusal> refusedControllers;  // by number of the set
};

// What queries for the slots of a chassis ask again and again, worked out at first need and shared
// by all that use the description.
struct tChassisTables {
  tOnceMade<tResult<std::string>> identity;
  tOnceMade<tSlotTable<std::uint32_t>> classicBuses;  // bus numbers
  tOnceMade<tSlotTable<std::uint32_t>> expressBuses;
  tOnceMade<tStarTable> stars;
  tOnceMade<tStarTable> dstars;
  tOnceMade<tSlotTable<std::uint32_t>> modules;  // slots that hold the module
};

// The tables of all chassis, each made at its first need. Any number of threads may ask.
class tTablesByChassis {
 public:
  // For at most about so many chassis; with more it takes longer.
  explicit tTablesByChassis(std::size_t expected);
  ~tTablesByChassis();

  const tChassisTables& of(std::uint32_t chassis) const;

 private:
  struct tNode {
    std::uint32_t chassis;
    tChassisTables tables;
    tNode* next;
  };

  std::atomic<tNode*>& bucketOf(std::uint32_t chassis) const;

  mutable std::vector<std::atomic<tNode*>> buckets_;  // chains, a power of two of them
  tHashSeed hashSeed_{this};
};

}  // namespace varmex

#endif
