#ifndef SOURCE_VARMEX_NATIVETRIGGERMANAGER_H
#define SOURCE_VARMEX_NATIVETRIGGERMANAGER_H

namespace varmex {

// Whether the trigger manager `identifier` ("None" for none) of a chassis of that vendor and model
// is native. The service library decides; without it every manager is native, and where it can't
// tell, a list in the registry names those that are not. Throws corerr::Exception: the service
// library's failures, varmex_errorInformationConflict for an empty identifier and
// varmex_errorInformationNotAvailable for "None" where the list would have to decide.
bool isNativeTriggerManager(const char* vendor, const char* model, const char* identifier);

}  // namespace varmex

#endif
