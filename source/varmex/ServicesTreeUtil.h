#ifndef SOURCE_VARMEX_SERVICESTREEUTIL_H
#define SOURCE_VARMEX_SERVICESTREEUTIL_H

#include <string>

#include "ostrel/quarks/result.h"

namespace varmex::ServicesTreeUtil {

// The name of the library that implements a trigger manager, out of the registry's services tree.
// `identifier` is "Vendor\Manager" or, for a manager that stands alone, its name. Empty where the
// tree lacks the manager or its library, and for a library that is given so; one that is given as a
// number is refused with varmex_errorTriggerManagerLibraryNotFound. Throws corerr::Exception for
// anything else that the tree reports. Keeps no state.
tResult<std::string> getTriggerManagerLibrary(const std::string& identifier);

}  // namespace varmex::ServicesTreeUtil

#endif
