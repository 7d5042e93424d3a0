#ifndef OSTREL_QUARKS_FAILURE_H
#define OSTREL_QUARKS_FAILURE_H

#include <string>

#include "ostrel/quarks/errorCode.h"
#include "ostrel/quarks/exception.h"
#include "ostrel/quarks/sourcePosition.h"
#include "ostrel/quarks/systemError.h"

namespace varmex::inline nOSTRELS100 {

inline constexpr tErrorCode kOstrelMemoryFull{-52000, "ostrelerr_memoryFull"};
inline constexpr tErrorCode kOstrelInvalidParameter{-52005, "ostrelerr_invalidParameter"};
inline constexpr tErrorCode kOstrelOsFault{-52008, "ostrelerr_osFault"};
inline constexpr tErrorCode kOstrelInsufficientPermissions{-52026,
                                                           "ostrelerr_insufficientPermissions"};

// Writes the status of one failure into a record: the four head keys, then the site's detail in the
// order of the calls. Nothing is written when the record's status stands under the merge rule.
class tFailureText {
 public:
  tFailureText(tStatusRecord& record, const tErrorCode& code, const tSourcePosition& position);

  // The same into an empty text that is ready for it.
  tFailureText(const tStatusWriter& writer, const tErrorCode& code,
               const tSourcePosition& position);

  void open(const char* key);
  void close();
  void text(const char* key, const char* value);
  void i32(const char* key, std::int32_t value);
  void u32(const char* key, std::uint32_t value);
  void raw(const char* key, const char* json);
  void systemError(const tSystemError& error);

 private:
  tStatusWriter writer_;
};

// The one way to report and to raise. A site reads as one statement:
//   tFailure(kErrorUnknownItem, OSTREL_HERE).u32("slotNum", slot).text("type", "slot").raise();
class tFailure {
 public:
  // A failure of its own, to be raised.
  tFailure(const tErrorCode& code, const tSourcePosition& position)
      : text_(exception_.record(), code, position) {}

  tFailure& open(const char* key) { return text_.open(key), *this; }
  tFailure& debug() { return open("varmex_debug"); }
  tFailure& text(const char* key, const char* value) { return text_.text(key, value), *this; }
  tFailure& text(const char* key, const std::string& value) { return text(key, value.c_str()); }
  tFailure& u32(const char* key, std::uint32_t value) { return text_.u32(key, value), *this; }
  tFailure& raw(const char* key, const char* json) { return text_.raw(key, json), *this; }
  tFailure& systemError(const tSystemError& error) { return text_.systemError(error), *this; }

  [[noreturn]] void raise() const { throw corerr::Exception(exception_); }
  void reportTo(tStatusRecord& record) const { statusMerge(record, exception_.record()); }

 private:
  corerr::Exception exception_;
  tFailureText text_;
};

}  // namespace varmex::inline nOSTRELS100

#endif
