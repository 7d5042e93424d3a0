/* The status record that every varmex function with a status argument fills. */
#ifndef VARMEX_STATUS_H
#define VARMEX_STATUS_H

#ifndef __cplusplus
#include <stdbool.h>
#endif
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include "varmex/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One record belongs to one call at a time; threads use one each.
 *
 * `text`, when not null, is a NUL-terminated JSON object in a buffer of `capacity` bytes; all bytes
 * behind the terminator are NUL but for the last one of the buffer, which is 'J'. The library
 * brings every buffer that it is given into this form.
 *
 * The library asks for buffer space through `reallocate` alone. `reallocate(record, newCapacity)`
 * must do one of these:
 * - newCapacity is 0: free the buffer, set `text` to null and `capacity` to 0, answer true;
 * - provide a buffer of at least newCapacity bytes that begins with the text of the old one, with
 *   its terminator, store it in `text` and its size in `capacity`, and answer true. A first buffer
 *   and the bytes behind the text may hold anything, so that realloc will do;
 * - change nothing and answer false. Less of the text is told then; the code stands.
 * It is called any number of times during a call, on the calling thread. It leaves `code` and
 * `reallocate` alone, calls no function with the same record, and neither throws nor jumps out.
 * `capacity` must never exceed what `text` points to: this alone the library can't see. With a null
 * `reallocate` the record carries its code, and a text only if it fits what is there.
 *
 * The library never clears a code. An error stands until the owner resets the record; an error
 * replaces a warning; a later warning replaces nothing. */
typedef struct tStatusRecord {
  int32_t code;      /* 0 success, positive warning, negative error */
  uint32_t capacity; /* size of the buffer in bytes, 0 without one */
  bool(VARMEX_CALL* reallocate)(struct tStatusRecord* record, uint32_t newCapacity);
  char* text; /* owned by the record, null without a buffer */
} tStatusRecord;

/* Brings `buffer` of `size` bytes into the form told above, with `source` as its text; a null
 * `source` keeps the text that stands there. Answers `buffer`, or null (nothing written) when
 * `size` is not greater than the length of the text plus 1. */
static inline char* varmex_formatStatusText(char* buffer, size_t size, const char* source) {
  const size_t length = strlen(source ? source : buffer);
  if (size <= length + 1) return NULL;
  if (source) memmove(buffer, source, length);
  memset(buffer + length, 0, size - 1 - length);
  buffer[size - 1] = 'J';
  return buffer;
}

/* The standard buffer policy: 512 bytes or a larger power of two from malloc, never shrunk but to
 * nothing. Answers false, changing nothing, when memory runs out or the capacity exceeds 2^31 - 1.
 */
static inline bool VARMEX_CALL varmex_reallocateStatus(tStatusRecord* record,
                                                       uint32_t newCapacity) {
  uint32_t size = 512;
  char* buffer;
  if (newCapacity == 0) {
    free(record->text);
    record->text = NULL;
    record->capacity = 0;
    return true;
  }
  if (newCapacity <= record->capacity) return true;
  if (newCapacity > UINT32_C(0x7FFFFFFF)) return false;
  while (size < newCapacity) size *= 2;
  buffer = (char*)malloc(size);
  if (!buffer) return false;
  if (!varmex_formatStatusText(buffer, size, record->text ? record->text : "{}")) {
    free(buffer);
    return false;
  }
  free(record->text);
  record->text = buffer;
  record->capacity = size;
  return true;
}

/* A record without failure and text that follows the standard buffer policy. Release it with
 * varmex_releaseStatus. */
static inline tStatusRecord varmex_makeStatus(void) {
  tStatusRecord record = {0, 0, varmex_reallocateStatus, NULL};
  return record;
}

/* The JSON text of the record, "{}" when it has none. It lives until the record changes. */
static inline const char* varmex_statusText(const tStatusRecord* record) {
  return record->text && record->capacity > 0 ? record->text : "{}";
}

/* Frees the text and clears the code, so that the record may serve again. */
static inline void varmex_releaseStatus(tStatusRecord* record) {
  if (record->text && record->reallocate) record->reallocate(record, 0);
  record->code = 0;
}

#ifdef __cplusplus
}
#endif

#endif
