// The C++ header as the other compiler family sees it. The standard library is GCC's here, so that
// compiler's macro comes behind it.
#include <bits/stdc++.h>

#define _MSC_VER 1929
#include <varmex/triggers.hpp>
#include <varmex/varmex.hpp>

static_assert(sizeof(tStatusRecord) == 24);
static_assert(sizeof(varmex::Kind) == 4);

std::uint32_t lines(const varmex::TriggerBridge& bridge) { return bridge.lineMapping(0); }
