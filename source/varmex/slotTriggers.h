#ifndef SOURCE_VARMEX_SLOTTRIGGERS_H
#define SOURCE_VARMEX_SLOTTRIGGERS_H

#include <cstdint>
#include <memory>
#include <string>

#include "source/varmex/description.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

// Which slot a search is for.
struct tSlotPlace {
  std::uint32_t chassis;
  std::uint32_t slot;
  tSlotName section;
  const tDescription* description;
};

struct TriggerBusInfo {
  std::uint32_t number;
  std::string name;
  std::string busName;

  bool operator==(const TriggerBusInfo&) const = default;
};

inline constexpr std::uint32_t kNoLine = 0xFFFFFFFF;

// Where a slot stands on a point-to-point trigger.
struct tStarPlace {
  std::uint32_t number;
  std::uint32_t line;  // kNoLine when the slot holds none
  bool controller;
  std::string lineName;        // empty without a line
  std::string controllerName;  // empty unless the slot is the controller

  bool operator==(const tStarPlace&) const = default;
};

struct StarTriggerInfo : tStarPlace {};
struct DStarTriggerInfo : tStarPlace {};

// The three families of trigger lines that a slot may touch. Each walk raises
// varmex_errorNotConnected when the slot does not touch its family, and lets the reader's
// exceptions through. They differ on purpose, in the file they read, in what a missing item means
// and in what they report of a controller; existing descriptions and clients rely on each
// difference.
std::unique_ptr<const TriggerBusInfo> findTriggerBus(const tSlotPlace& place);
std::unique_ptr<const StarTriggerInfo> findStarTrigger(const tSlotPlace& place);
std::unique_ptr<const DStarTriggerInfo> findDStarTrigger(const tSlotPlace& place);

// varmex_errorNotConnected for one kind of line of a slot.
[[noreturn]] void raiseNotConnected(const tSlotPlace& place, const char* triggerType,
                                    const tSourcePosition& position);

}  // namespace varmex

#endif
