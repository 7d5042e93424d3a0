#ifndef OSTREL_QUARKS_STATUS_H
#define OSTREL_QUARKS_STATUS_H

#include <cstddef>
#include <cstdint>

#include "ostrel/quarks/jsonWriter.h"
#include "varmex/status.h"

namespace varmex::inline nOSTRELS100 {

// Operations on a status record. None throws. Running out of memory for the text is no failure: the
// code stands, and the text holds the pairs that fitted.

// The standard buffer policy, at one address: records of the library are told from a caller's own
// by it.
bool statusReallocate(tStatusRecord* record, std::uint32_t newCapacity);

inline tStatusRecord makeStatus() { return {0, 0, statusReallocate, nullptr}; }

inline bool isFailure(const tStatusRecord& record) { return record.code < 0; }

// The merge rule: whether a status with code `incoming` takes the place of one with `current`.
constexpr bool replacesStatus(std::int32_t current, std::int32_t incoming) {
  return current == 0 ? incoming != 0 : current > 0 && incoming < 0;
}

// Brings a buffer into the form that the writer relies on, with `source` or, when that is null, the
// text that stands there; null when `size` does not exceed the text's length plus 1.
char* statusFormatText(char* buffer, std::size_t size, const char* source);

// Asks the record's policy for a buffer of that size unless there is one, and makes sure of its
// form; false when there is none then.
bool statusEnsureCapacity(tStatusRecord& record, std::uint32_t capacity);

// Copies `source`, or "{}" when it is null, into the record; false when there was no room for it.
bool statusSetText(tStatusRecord& record, const char* source);

// Frees the text through the record's own policy.
void statusReleaseText(tStatusRecord& record);

// True when the code replaced the old one under the merge rule. The text stays as it was.
bool statusSetCode(tStatusRecord& record, std::int32_t code);

// As statusSetCode, and on success the text is "{}" where one exists.
bool statusReset(tStatusRecord& record, std::int32_t code);

// Replaces `target` by `source` under the merge rule; true when it did. With one policy in both
// records the text changes owner; the source keeps its code in any case.
bool statusMerge(tStatusRecord& target, tStatusRecord& source);

// A writer at the end of the record's text; its cursor is null when the record can hold none.
tStatusWriter statusBegin(tStatusRecord& record);

// tJsonGrow for a record: doubles the buffer.
char* statusGrow(char* cursor, void* record);

}  // namespace varmex::inline nOSTRELS100

#endif
