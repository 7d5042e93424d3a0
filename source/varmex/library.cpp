#include "source/varmex/library.h"

#include <utility>

#include "ostrel/quarks/failure.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

namespace {

constexpr const char* kServiceLibraryName = "dunmorsvc";

const std::runtime_error noMessage("");

void reportMissing(tFixedStatus& status, const tSourcePosition& position) {
  fixedStatusSet(status, kOstrelInvalidParameter.value, position.component, position.file,
                 position.line);
}

}  // namespace

tLibraryNotAvailable::tLibraryNotAvailable() : std::runtime_error(noMessage) {}

// The text is the path alone, without the keys that every other failure begins with.
LibraryNotAvailableException::LibraryNotAvailableException(const char* path) {
  statusReset(record(), varmex_errorLibraryNotAvailable);
  const tStatusWriter writer = statusBegin(record());
  jsonAddString(writer.cursor, "path", path, writer.grow, writer.context);
}

tServiceLibrary::tServiceLibrary() : module_(loadDynamicLibrary(kServiceLibraryName)) {}

void tServiceLibrary::requireLoaded() const {
  if (!isLoaded()) throw LibraryNotAvailableException(kServiceLibraryName);
}

tFunctionAddress tServiceLibrary::findAddress(const char* name, tFixedStatus& status) const {
  const tFunctionAddress address = isLoaded() ? findFunction(module_, name) : nullptr;
  if (!address) reportMissing(status, OSTREL_HERE);
  return address;
}

void tServiceLibrary::release() {
  if (isLoaded()) freeDynamicLibrary(std::exchange(module_, nullptr));
}

}  // namespace varmex
