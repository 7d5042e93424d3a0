#ifndef SOURCE_VARMEX_SLOTTRIGGERS_H
#define SOURCE_VARMEX_SLOTTRIGGERS_H

#include <cstdint>
#include <string>

#include "source/varmex/description.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

// Which slot a search is for.
struct tSlotPlace {
  std::uint32_t chassis;
  std::uint32_t slot;
  tSectionPair sections;  // one at least
  const tDescription* description;
};

struct TriggerBusInfo {
  std::uint32_t number;
  std::string name;
  std::string busName;

  bool operator==(const TriggerBusInfo&) const = default;
};

// The names of a slot's place on a point-to-point trigger.
struct tStarNames {
  std::string lineName;        // empty without a line
  std::string controllerName;  // empty unless the slot is the controller

  bool operator==(const tStarNames&) const = default;
};

struct StarTriggerInfo : tStarNames {};
struct DStarTriggerInfo : tStarNames {};

// The three families of trigger lines that a slot may touch. Each search refuses with
// varmex_errorNotConnected when the slot does not touch its family, and lets the reader's refusals
// through. They differ on purpose, in the file they read, in what a missing item means and in what
// they report of a controller; existing descriptions and clients rely on each difference.
tResult<std::uint32_t> findTriggerBus(const tSlotPlace& place);
tResult<const tStarMatch*> findStarTrigger(const tSlotPlace& place);
tResult<const tStarMatch*> findDStarTrigger(const tSlotPlace& place);

// The names that go with what was found.
tResult<TriggerBusInfo> nameTriggerBus(const tSlotPlace& place, std::uint32_t bus);
tResult<StarTriggerInfo> nameStarTrigger(const tSlotPlace& place, const tStarMatch& match);
tResult<DStarTriggerInfo> nameDStarTrigger(const tSlotPlace& place, const tStarMatch& match);

// varmex_errorNotConnected for one kind of line of a slot.
tRefusal notConnected(const tSlotPlace& place, tLiteral triggerType,
                      const tSourcePosition& position);

}  // namespace varmex

#endif
