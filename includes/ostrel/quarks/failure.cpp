#include "ostrel/quarks/failure.h"

namespace varmex::inline nOSTRELS100 {

tFailureText::tFailureText(tStatusRecord& record, const tErrorCode& code,
                           const tSourcePosition& position)
    : tFailureText(statusReset(record, code.value) ? statusBegin(record)
                                                   : tStatusWriter{nullptr, statusGrow, &record},
                   code, position) {}

tFailureText::tFailureText(const tStatusWriter& writer, const tErrorCode& code,
                           const tSourcePosition& position)
    : writer_(writer) {
  text("error_constant", code.constant);
  jsonAddSourcePosition(writer_, position);
}

void tFailureText::open(const char* key) {
  writer_.cursor = jsonAddObject(writer_.cursor, key, writer_.grow, writer_.context);
  if (writer_.cursor) --writer_.cursor;
}

void tFailureText::close() {
  if (writer_.cursor) ++writer_.cursor;
}

void tFailureText::text(const char* key, const char* value) {
  writer_.cursor = jsonAddString(writer_.cursor, key, value, writer_.grow, writer_.context);
}

void tFailureText::i32(const char* key, std::int32_t value) {
  writer_.cursor = jsonAddI32(writer_.cursor, key, value, writer_.grow, writer_.context);
}

void tFailureText::u32(const char* key, std::uint32_t value) {
  writer_.cursor = jsonAddU32(writer_.cursor, key, value, writer_.grow, writer_.context);
}

void tFailureText::raw(const char* key, const char* json) {
  writer_.cursor = jsonAddRaw(writer_.cursor, key, json, writer_.grow, writer_.context);
}

void tFailureText::systemError(const tSystemError& error) {
  open("internal_error");
  text("api", error.api);
  u32("code", error.code);
  if (*error.text) text("string", error.text);
  close();
}

}  // namespace varmex::inline nOSTRELS100
