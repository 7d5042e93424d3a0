#ifndef TOOLS_VARMEX_DESCRIBE_TRIGGERS_H
#define TOOLS_VARMEX_DESCRIBE_TRIGGERS_H

#include "tools/varmex/describe/faults.h"
#include "varmex/triggers.hpp"

namespace tool {

// How a trigger gets from one slot to another, as a document by docs/varmex.schema.json: both ends,
// the ways over buses and bridges, the star triggers that both are on, in "reason" why there is
// neither, and in "unread" a sentence for each part that can't be read and may hide a way.
struct tTriggerAnswer {
  tJson document;
  tFaults unread;     // what keeps these parts from being read
  bool isFromUnread;  // whether the trigger bus of an end is among them
  bool isToUnread;
};
tTriggerAnswer describeTriggers(const varmex::Session& session, const varmex::Slot& from,
                                const varmex::Slot& to, varmex::WaysWanted wanted);

// "0>0 6>6-7" for the lines of a way or bridge.
std::string lineMapText(const tJson& lines);

}  // namespace tool

#endif
