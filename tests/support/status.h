#ifndef TESTS_SUPPORT_STATUS_H
#define TESTS_SUPPORT_STATUS_H

#include <cstdint>
#include <string>

#include "varmex/status.h"

namespace test {

// A status record as a caller holds one.
class tStatus {
 public:
  tStatus() : record_(varmex_makeStatus()) {}
  ~tStatus() { varmex_releaseStatus(&record_); }
  tStatus(const tStatus&) = delete;
  tStatus& operator=(const tStatus&) = delete;

  operator tStatusRecord*() { return &record_; }
  tStatusRecord& operator*() { return record_; }
  tStatusRecord& record() { return record_; }
  std::int32_t code() const { return record_.code; }
  std::string text() const { return varmex_statusText(&record_); }

 private:
  tStatusRecord record_;
};

// A failure in one text: its code, its constant and what follows the four head keys, as the text of
// a JSON object. `detail` is the latter.
std::string failure(std::int32_t code, const std::string& constant,
                    const std::string& detail = "{}");

// The same by words: "UnknownItem DETAIL" for varmex_errorUnknownItem. DETAIL is what
// "varmex_debug" holds, in quotes a wrapped message, behind a plus all that follows the head keys.
std::string refusal(const std::string& words);

// What a record holds in that form, with the head keys in their order; "" for nothing. The record
// is then fresh again.
std::string takeFailure(tStatus& status);

bool isWellFormed(const std::string& json);

}  // namespace test

#endif
