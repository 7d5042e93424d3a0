#ifndef SOURCE_VARMEX_ERRORCODES_H
#define SOURCE_VARMEX_ERRORCODES_H

#include "ostrel/quarks/failure.h"
#include "varmex/varmex.h"

namespace varmex {

// The library's status codes with their constants. Two conditions share the constant of a time-out,
// which has no name of its own.
inline constexpr tErrorCode kErrorMemoryFull{varmex_errorMemoryFull, "varmex_errorMemoryFull"};
inline constexpr tErrorCode kErrorUnknownItem{varmex_errorUnknownItem, "varmex_errorUnknownItem"};
inline constexpr tErrorCode kErrorInvalidHandle{varmex_errorInvalidHandle,
                                                "varmex_errorInvalidHandle"};
inline constexpr tErrorCode kErrorInformationConflict{varmex_errorInformationConflict,
                                                      "varmex_errorInformationConflict"};
inline constexpr tErrorCode kErrorFeatureUnsupported{varmex_errorFeatureUnsupported,
                                                     "varmex_errorFeatureUnsupported"};
inline constexpr tErrorCode kErrorInvalidParameter{varmex_errorInvalidParameter,
                                                   "varmex_errorInvalidParameter"};
inline constexpr tErrorCode kErrorAttributeNotApplicable{varmex_errorAttributeNotApplicable,
                                                         "varmex_errorAttributeNotApplicable"};
inline constexpr tErrorCode kErrorInformationNotAvailable{varmex_errorInformationNotAvailable,
                                                          "varmex_errorInformationNotAvailable"};
inline constexpr tErrorCode kErrorStarController{varmex_errorStarController,
                                                 "varmex_errorStarController"};
inline constexpr tErrorCode kErrorNotConnected{varmex_errorNotConnected,
                                               "varmex_errorNotConnected"};
inline constexpr tErrorCode kErrorIterationFailure{varmex_errorIterationFailure,
                                                   "varmex_errorIterationFailure"};
inline constexpr tErrorCode kErrorTriggerManagerLibraryNotFound{
    varmex_errorTriggerManagerLibraryNotFound, "varmex_errorTriggerManagerLibraryNotFound"};
inline constexpr tErrorCode kWarningFailedSync{varmex_warningFailedSync,
                                               "varmex_warningFailedSync"};
inline constexpr tErrorCode kLockTimeout{varmex_errorLockTimeout, "timeoutErrorCode"};
inline constexpr tErrorCode kDescriptionTimeout{varmex_pxiSystemDescriptionInaccessible,
                                                "timeoutErrorCode"};
inline constexpr tErrorCode kDescriptionInaccessible{varmex_pxiSystemDescriptionInaccessible,
                                                     "varmex_pxiSystemDescriptionInaccessible"};
inline constexpr tErrorCode kSoftwareFault{varmex_softwareFault, "varmex_softwareFault"};

}  // namespace varmex

#endif
