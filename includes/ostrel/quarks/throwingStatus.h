#ifndef OSTREL_QUARKS_THROWINGSTATUS_H
#define OSTREL_QUARKS_THROWINGSTATUS_H

#include <exception>

#include "ostrel/quarks/exception.h"
#include "ostrel/quarks/fixedStatus.h"

namespace varmex::inline nOSTRELS100 {

// How each kind of status starts, is tested and becomes the record of an exception.
inline void initializeStatus(tStatusRecord& status) { status = makeStatus(); }
inline void initializeStatus(tFixedStatus&) {}
inline void initializeStatus(std::int32_t& status) { status = 0; }

inline std::int32_t statusCode(const tStatusRecord& status) { return status.code; }
inline std::int32_t statusCode(const tFixedStatus& status) { return status.code; }
inline std::int32_t statusCode(std::int32_t status) { return status; }

inline void moveStatus(tStatusRecord& status, tStatusRecord& target) {
  statusMerge(target, status);
}
inline void moveStatus(const tFixedStatus& status, tStatusRecord& target) {
  statusFromFixed(status, target);
}
inline void moveStatus(std::int32_t status, tStatusRecord& target) {
  statusSetCode(target, status);
}

inline void releaseStatus(tStatusRecord& status) { statusReleaseText(status); }
inline void releaseStatus(const tFixedStatus&) {}
inline void releaseStatus(std::int32_t) {}

// Owns a status for a routine that reports instead of throwing, and throws it at the end of its
// scope when it is an error. While another exception is on its way out of the scope nothing is
// thrown and the status is lost: the failure that already travels wins.
template <class Status>
class tThrowingStatus {
 public:
  tThrowingStatus() : exceptionsOutside_(std::uncaught_exceptions()) { initializeStatus(status_); }
  tThrowingStatus(const tThrowingStatus&) = delete;
  tThrowingStatus& operator=(const tThrowingStatus&) = delete;

  ~tThrowingStatus() noexcept(false) {
    corerr::Exception exception;
    const bool throws = statusCode(status_) < 0 && std::uncaught_exceptions() == exceptionsOutside_;
    if (throws) moveStatus(status_, exception.record());
    releaseStatus(status_);
    if (throws) throw corerr::Exception(exception);
  }

  operator Status&() { return status_; }
  Status* get() { return &status_; }

 private:
  Status status_;
  int exceptionsOutside_;
};

}  // namespace varmex::inline nOSTRELS100

#endif
