#ifndef SOURCE_VARMEX_SERVICESTREEUTIL_H
#define SOURCE_VARMEX_SERVICESTREEUTIL_H

#include <string>

namespace varmex::ServicesTreeUtil {

// The name of the library that implements a trigger manager, out of the registry's services tree.
// `identifier` is "Vendor\Manager" or, for a manager that stands alone, its name. A library that is
// given as an empty text is answered so. Throws
// corerr::Exception with a code of the data tree where the tree lacks the manager or its library,
// with varmex_errorTriggerManagerLibraryNotFound where the library is given as a number. Keeps no
// state.
std::string getTriggerManagerLibrary(const std::string& identifier);

}  // namespace varmex::ServicesTreeUtil

#endif
