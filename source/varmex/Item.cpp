#include "source/varmex/Item.h"

#include "source/varmex/errorCodes.h"

namespace varmex {

tRefusal attributeNotApplicable(std::uint32_t attribute, const tSourcePosition& position) {
  return tRefusal(kErrorAttributeNotApplicable, position)
      .debug()
      .i32("attribute", static_cast<std::int32_t>(attribute));
}

tRefusal attributeNotAvailable(std::uint32_t attribute, const tSourcePosition& position) {
  return tRefusal(kErrorInformationNotAvailable, position)
      .debug()
      .i32("attribute", static_cast<std::int32_t>(attribute));
}

}  // namespace varmex
