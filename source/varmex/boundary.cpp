#include "source/varmex/boundary.h"

#include <exception>
#include <new>
#include <typeinfo>

#include "corpxiTools/iniException.h"
#include "ostrel/quarks/exception.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

namespace {

void reportWrapped(tStatusRecord& record, const tErrorCode& code, const tSourcePosition& position,
                   const std::exception& exception) {
  const char* const message = exception.what();
  tFailureText text(record, code, position);
  text.open("varmex_debug");
  text.text("wrappedMessage", message && *message ? message : "Unknown exception");
  text.close();
}

}  // namespace

void reportCurrentException(tStatusRecord& record, const tSourcePosition& position) {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    tFailureText(record, kErrorMemoryFull, position);
  } catch (const std::bad_cast& exception) {
    reportWrapped(record, kSoftwareFault, position, exception);
  } catch (const tIniFileIOException& exception) {
    reportWrapped(record, kDescriptionInaccessible, position, exception);
  } catch (const tIniException& exception) {
    reportWrapped(record, kErrorInformationNotAvailable, position, exception);
  } catch (const corerr::ExceptionBase& exception) {
    statusMerge(record, exception.record());
  }
}

}  // namespace varmex
