#include "ostrel/quarks/status.h"

#include <cstring>

#include "ostrel/quarks/jsonScanner.h"

namespace varmex::inline nOSTRELS100 {

namespace {

constexpr std::uint32_t kEmptyTextCapacity = 4;  // "{}", its terminator and the mark
constexpr std::uint32_t kMaxTextLength = 0x7FFFFFFD;

// Brings a buffer into form after a caller's policy had it in hand, whatever that made of it: the
// writer looks for the mark and would run past a buffer that lacks it, and callers read as far as
// the terminator. A first buffer, and one without a text, becomes an empty record; in one too small
// for that an empty text must do. Not a byte beyond the capacity is touched.
bool restoreForm(tStatusRecord& record, bool hadText) {
  if (!record.text) record.capacity = 0;
  if (record.capacity == 0) return false;
  const bool hasText = hadText && std::memchr(record.text, '\0', record.capacity);
  if (statusFormatText(record.text, record.capacity, hasText ? nullptr : "{}")) return true;
  if (!hasText) record.text[0] = '\0';
  return false;
}

bool requestCapacity(tStatusRecord& record, std::uint32_t capacity) {
  if (!record.reallocate) return false;
  const bool hadText = record.text != nullptr;
  const bool provides = record.reallocate(&record, capacity);
  return restoreForm(record, hadText) && provides && record.capacity >= capacity;
}

}  // namespace

bool statusReallocate(tStatusRecord* record, std::uint32_t newCapacity) {
  return varmex_reallocateStatus(record, newCapacity);
}

char* statusFormatText(char* buffer, std::size_t size, const char* source) {
  return varmex_formatStatusText(buffer, size, source);
}

bool statusEnsureCapacity(tStatusRecord& record, std::uint32_t capacity) {
  if (!record.text) record.capacity = 0;
  return record.capacity >= capacity || requestCapacity(record, capacity);
}

bool statusSetText(tStatusRecord& record, const char* source) {
  if (!source) source = "{}";
  const std::size_t length = std::strlen(source);
  if (length > kMaxTextLength) return false;
  if (!statusEnsureCapacity(record, static_cast<std::uint32_t>(length + 2))) return false;
  return statusFormatText(record.text, record.capacity, source) != nullptr;
}

void statusReleaseText(tStatusRecord& record) {
  if (record.text && record.reallocate) record.reallocate(&record, 0);
}

bool statusSetCode(tStatusRecord& record, std::int32_t code) {
  if (!replacesStatus(record.code, code)) return false;
  record.code = code;
  return true;
}

bool statusReset(tStatusRecord& record, std::int32_t code) {
  if (!statusSetCode(record, code)) return false;
  if (record.text && statusEnsureCapacity(record, kEmptyTextCapacity)) {
    statusFormatText(record.text, record.capacity, "{}");
  }
  return true;
}

bool statusMerge(tStatusRecord& target, tStatusRecord& source) {
  if (!statusReset(target, source.code)) return false;
  if (target.reallocate != source.reallocate) {
    statusSetText(target, source.text);
    return true;
  }
  statusReleaseText(target);
  target.capacity = source.capacity;
  target.text = source.text;
  source.capacity = 0;
  source.text = nullptr;
  return true;
}

tStatusWriter statusBegin(tStatusRecord& record) {
  char* cursor = nullptr;
  if (statusEnsureCapacity(record, kEmptyTextCapacity)) cursor = jsonFindEnd(record.text);
  return {cursor, statusGrow, &record};
}

char* statusGrow(char* cursor, void* context) {
  tStatusRecord& record = *static_cast<tStatusRecord*>(context);
  const std::uint32_t capacity = record.capacity;
  if (2 * capacity - 4 > kMaxTextLength) return nullptr;
  const std::ptrdiff_t offset = cursor - record.text;
  const std::size_t length = std::strlen(record.text);
  if (!statusEnsureCapacity(record, 2 * capacity - 2)) return nullptr;
  if (std::strlen(record.text) != length || !jsonFindEnd(record.text)) return nullptr;
  return record.text + offset;
}

}  // namespace varmex::inline nOSTRELS100
