#include "tools/varmex/text/streams.h"

namespace tool {

struct tStreams::tState {};

tStreams::tStreams() = default;
tStreams::~tStreams() = default;

}  // namespace tool
