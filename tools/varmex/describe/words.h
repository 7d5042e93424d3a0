#ifndef TOOLS_VARMEX_DESCRIBE_WORDS_H
#define TOOLS_VARMEX_DESCRIBE_WORDS_H

#include <string>

#include "tools/varmex/describe/json.h"

namespace tool {

// What `describe` tells of an item, in a few words for a person; empty where there is nothing.

std::string slotTypeName(const tJson& slot);

// The module in a slot: what its devices say, or the controller of a system slot, or where the
// module that covers the slot sits.
std::string moduleOf(const tJson& slot);

std::string addressesOf(const tJson& slot);

std::string linkOf(const tJson& slot);

// "1.3" for line 3 of trigger 1, with "controller" where the slot drives it. The attributes that
// tell of one kind of trigger are named.
std::string triggerOf(const tJson& slot, const char* number, const char* lineName,
                      const char* controllerName);

// "0>0 1>2,4-7" for the lines of a bridge that come out anywhere.
std::string lineMapOf(const tJson& bridge);

}  // namespace tool

#endif
