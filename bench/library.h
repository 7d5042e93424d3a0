#ifndef BENCH_LIBRARY_H
#define BENCH_LIBRARY_H

#include "varmex/varmex.h"

namespace bench {

// The functions of a build of the library that a walk needs.
struct tLibrary {
  decltype(&varmex_openPXISession) openSession;
  decltype(&varmex_close) close;
  decltype(&varmex_getU32Attribute) number;
  decltype(&varmex_getStringAttribute) text;
  decltype(&varmex_getItemContainer) list;
  decltype(&varmex_destroyItemContainer) destroyList;
  decltype(&varmex_ItemIterator_end) end;
  decltype(&varmex_ItemIterator_nextItem) next;
};

const tLibrary& libraryNow();

// The build in the folder that VARMEX_BENCH_BEFORE names, null without that variable.
const tLibrary* libraryBefore();

// The `varmex` command of either build; null without the variable.
const char* commandNow();
const char* commandBefore();

}  // namespace bench

#endif
