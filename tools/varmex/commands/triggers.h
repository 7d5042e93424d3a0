#ifndef TOOLS_VARMEX_COMMANDS_TRIGGERS_H
#define TOOLS_VARMEX_COMMANDS_TRIGGERS_H

#include <memory>

#include "tools/varmex/command.h"

namespace tool {

std::unique_ptr<tCommand> makeTriggers();

}  // namespace tool

#endif
