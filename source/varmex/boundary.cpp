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

void reportTo(tStatusRecord& record, const tSourcePosition& position) {
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

}  // namespace

void reportCurrentException(tStatusRecord* record, const tSourcePosition& position) {
  if (record) return reportTo(*record, position);
  tStatusRecord discarded{};  // without a policy no text is written
  reportTo(discarded, position);
}

// A reader's message is wrapped as its exceptions are.
void reportRefusal(const tRefusal& refusal, tStatusRecord& record,
                   const tSourcePosition& position) {
  if (!refusal.isMessage()) return refusal.reportTo(record);
  refusal.wrapped(kErrorInformationNotAvailable, position).reportTo(record);
}

void raise(const tRefusal& refusal) {
  if (refusal.isMessage()) throw tIniException(refusal.message());
  corerr::Exception exception;
  refusal.reportTo(exception.record());
  throw corerr::Exception(exception);
}

}  // namespace varmex
