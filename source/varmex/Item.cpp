#include "source/varmex/Item.h"

#include "source/varmex/errorCodes.h"

namespace varmex {

void raiseAttributeNotApplicable(std::uint32_t attribute, const tSourcePosition& position) {
  tFailure(kErrorAttributeNotApplicable, position)
      .debug()
      .i32("attribute", static_cast<std::int32_t>(attribute))
      .raise();
}

void raiseAttributeNotAvailable(std::uint32_t attribute, const tSourcePosition& position) {
  tFailure(kErrorInformationNotAvailable, position)
      .debug()
      .i32("attribute", static_cast<std::int32_t>(attribute))
      .raise();
}

}  // namespace varmex
