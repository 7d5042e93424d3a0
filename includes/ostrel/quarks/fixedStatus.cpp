#include "ostrel/quarks/fixedStatus.h"

#include <algorithm>
#include <cstring>

#include "ostrel/quarks/jsonWriter.h"
#include "ostrel/quarks/status.h"

namespace varmex::inline nOSTRELS100 {

namespace {

constexpr std::size_t kEndLength = 49;          // of a shortened file name, on either side
constexpr std::uint32_t kSourceCapacity = 258;  // room asked for ahead of each source key

template <std::size_t Size>
void copyTruncated(char (&destination)[Size], const char* source) {
  const std::size_t length = std::min(std::strlen(source), Size - 1);
  std::memcpy(destination, source, length);
  destination[length] = '\0';
}

void copyFileName(tFixedStatus& fixed, const char* file) {
  const std::size_t length = std::strlen(file);
  copyTruncated(fixed.file, file);
  if (length < sizeof fixed.file) return;
  std::memcpy(fixed.file + kEndLength, "..", 2);
  std::memcpy(fixed.file + kEndLength + 2, file + length - kEndLength, kEndLength);
}

// The text of a field of another's record, which may lack its terminator.
template <std::size_t Size>
void readField(char (&text)[Size + 1], const char (&field)[Size]) {
  std::memcpy(text, field, Size);
  text[Size] = '\0';
}

}  // namespace

void fixedStatusSet(tFixedStatus& fixed, std::int32_t code, const char* component, const char* file,
                    std::uint32_t line) {
  if (!replacesStatus(fixed.code, code)) return;
  fixed.code = code;
  if (fixed.size < kFixedStatusSize) return;
  copyTruncated(fixed.component, component);
  copyFileName(fixed, file);
  fixed.line = line;
  fixed.extra = 0;
}

bool statusFromFixed(const tFixedStatus& fixed, tStatusRecord& record) {
  if (fixed.code == 0 || !statusReset(record, fixed.code)) return true;
  if (fixed.size < kFixedStatusSize) return true;
  char file[sizeof fixed.file + 1];
  char component[sizeof fixed.component + 1];
  readField(file, fixed.file);
  readField(component, fixed.component);
  bool written = true;
  if (*file) {
    if (!statusEnsureCapacity(record, kSourceCapacity)) return false;
    char* cursor = jsonAddString(statusBegin(record).cursor, "file", file);
    written = jsonAddU32(cursor, "line", fixed.line) != nullptr;
  }
  if (*component) {
    if (!statusEnsureCapacity(record, kSourceCapacity)) return false;
    written = jsonAddString(statusBegin(record).cursor, "component", component) && written;
  }
  return written;
}

}  // namespace varmex::inline nOSTRELS100
