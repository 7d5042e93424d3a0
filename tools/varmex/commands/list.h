#ifndef TOOLS_VARMEX_COMMANDS_LIST_H
#define TOOLS_VARMEX_COMMANDS_LIST_H

#include <memory>

#include "tools/varmex/command.h"

namespace tool {

using tCommandPtr = std::unique_ptr<tCommand>;

tCommandPtr makeCheck();
tCommandPtr makeComplete();
tCommandPtr makeDiff();
tCommandPtr makeDraw();
tCommandPtr makeExplain();
tCommandPtr makeFind();
tCommandPtr makeList();
tCommandPtr makeMake();
tCommandPtr makeReport();
tCommandPtr makeRoute();
tCommandPtr makeSave();
tCommandPtr makeShow();
tCommandPtr makeTerminals();
tCommandPtr makeTriggers();
tCommandPtr makeWatch();

}  // namespace tool

#endif
