#ifndef SOURCE_VARMEX_NATIVETRIGGERMANAGER_H
#define SOURCE_VARMEX_NATIVETRIGGERMANAGER_H

#include "ostrel/quarks/result.h"

namespace varmex {

// Whether the trigger manager `identifier` ("None" for none) of a chassis of that vendor and model
// is native. The service library decides; without it every manager is native, and where it can't
// tell, a list in the registry names those that are not. Where the list would have to decide, an
// empty identifier is refused with varmex_errorInformationConflict and "None" with
// varmex_errorInformationNotAvailable. Throws the service library's failures. The refusal refers to
// the identifier.
tResult<bool> isNativeTriggerManager(const char* vendor, const char* model, const char* identifier);

}  // namespace varmex

#endif
