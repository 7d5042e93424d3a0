// The C++ header as the other compiler family sees it. The standard library is GCC's here, so that
// compiler's macro comes behind it.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#define _MSC_VER 1929
#include <varmex/triggers.hpp>
#include <varmex/varmex.hpp>

static_assert(sizeof(tStatusRecord) == 24);
static_assert(sizeof(varmex::Kind) == 4);

std::uint32_t lines(const varmex::TriggerBridge& bridge) { return bridge.lineMapping(0); }
