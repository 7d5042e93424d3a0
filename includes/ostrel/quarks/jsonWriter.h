#ifndef OSTREL_QUARKS_JSONWRITER_H
#define OSTREL_QUARKS_JSONWRITER_H

#include <cstddef>
#include <cstdint>

#include "ostrel/quarks/sourcePosition.h"

namespace varmex::inline nOSTRELS100 {

// Writes JSON in place, into a buffer whose size the writer does not know: behind the text's
// terminator stand NUL bytes up to the last byte of the buffer, which is 'J'. A cursor stands on a
// bracket of the container that takes the next pair: on the closing one to add at the back, on the
// opening one to add at the front. Each pair goes in whole or not at all.

// Enlarges the buffer around `cursor`; the cursor at the same offset in the new one, or null.
using tJsonGrow = char* (*)(char* cursor, void* context);

struct tStatusWriter {
  char* cursor;    // null once a step has failed
  tJsonGrow grow;  // null: the buffer cannot grow
  void* context;   // for `grow`
};

// Opens a gap of `length` bytes for a new element, its comma aside; where to write it, or null when
// the buffer has no room, and then nothing has changed.
char* jsonMakeRoom(char* position, std::size_t length);

std::size_t jsonEscapedLength(const char* source);

// Writes exactly jsonEscapedLength(source) bytes and no terminator; the position behind them.
char* jsonEscape(char* destination, const char* source);

// Each adds one pair, or a bare value when `key` is null, and answers the position behind it, which
// is the cursor for the next one; null when the cursor is null or the buffer could not grow.
// jsonAddRaw takes the value as it stands: the caller vouches that it is JSON. The forms without
// `grow` fail when the buffer has no room.
char* jsonAddString(char* cursor, const char* key, const char* value, tJsonGrow grow,
                    void* context);
char* jsonAddI32(char* cursor, const char* key, std::int32_t value, tJsonGrow grow, void* context);
char* jsonAddU32(char* cursor, const char* key, std::uint32_t value, tJsonGrow grow, void* context);
char* jsonAddU64(char* cursor, const char* key, std::uint64_t value, tJsonGrow grow, void* context);
char* jsonAddRaw(char* cursor, const char* key, const char* value, tJsonGrow grow, void* context);
char* jsonAddObject(char* cursor, const char* key, tJsonGrow grow, void* context);

char* jsonAddString(char* cursor, const char* key, const char* value);
char* jsonAddI32(char* cursor, const char* key, std::int32_t value);
char* jsonAddU32(char* cursor, const char* key, std::uint32_t value);
char* jsonAddU64(char* cursor, const char* key, std::uint64_t value);
char* jsonAddRaw(char* cursor, const char* key, const char* value);
char* jsonAddObject(char* cursor, const char* key);

// Adds "file", "line" and, unless it is null, "component".
void jsonAddSourcePosition(tStatusWriter& writer, const tSourcePosition& position);

}  // namespace varmex::inline nOSTRELS100

#endif
