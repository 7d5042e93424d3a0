#ifndef BENCH_WALK_H
#define BENCH_WALK_H

#include "bench/library.h"

namespace bench {

// Asks every item of the session for every attribute of its kind.
void walk(const tLibrary& library, varmex_Item* session);

}  // namespace bench

#endif
