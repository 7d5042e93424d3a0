#ifndef OSTREL_QUARKS_EXCEPTION_H
#define OSTREL_QUARKS_EXCEPTION_H

#include <exception>

#include "ostrel/quarks/status.h"

namespace corerr {

// What a failure travels in: it owns a status record, whose text moves on to each copy, so that a
// throw never copies it.
class ExceptionBase {
 public:
  ExceptionBase() : record_(varmex::makeStatus()) {}
  ExceptionBase(const ExceptionBase& other) : ExceptionBase() {
    varmex::statusMerge(record_, other.record_);
  }
  ExceptionBase& operator=(const ExceptionBase&) = delete;
  virtual ~ExceptionBase() { varmex::statusReleaseText(record_); }

  // The JSON text, or the empty string; it lives as long as the exception.
  virtual const char* what() const noexcept { return record_.text ? record_.text : ""; }

  tStatusRecord& record() const { return record_; }

 private:
  mutable tStatusRecord record_;
};

class Exception : public virtual ExceptionBase, public virtual std::exception {
 public:
  const char* what() const noexcept override { return ExceptionBase::what(); }
};

}  // namespace corerr

#endif
