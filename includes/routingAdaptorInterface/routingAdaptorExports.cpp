// The exported routing functions: each guards the status, makes one call on the handle and turns
// exceptions into the status. What they throw beside those stays the caller's. A thread that is
// cancelled meanwhile is so behind the call.

#include <new>

#include "ostrel/quarks/cancellation.h"
#include "ostrel/quarks/failure.h"
#include "pxiRoutingAdaptor/pxiRoutingAdaptorSession.h"
#include "telmar/interfaces.h"
#include "varmex/telmar_ra_varmex.h"

namespace {

using namespace varmex;
using nCorPxiRoutingAdaptor::pxiRoutingAdaptorSession;

constexpr tErrorCode kMemoryFull{-52000, "nOSTRELS100::tStatus::kMemoryFull"};

// Not the boundary of the query functions: it knows fewer exceptions, and memory has another code.
template <class Body>
auto callGuarded(tStatusRecord& status, const tSourcePosition& position, Body body)
    -> decltype(body()) {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    tFailureText(status, kMemoryFull, position);
  } catch (const corerr::ExceptionBase& exception) {
    statusMerge(status, exception.record());
  }
  return decltype(body())();
}

template <class Body>
auto callGuarded(tStatusRecord* status, const tSourcePosition& position, Body body)
    -> decltype(body()) {
  const tCancellationOff uncancelled;
  if (!status) {
    corerr::Exception discarded;
    return callGuarded(discarded.record(), position, body);
  }
  if (isFailure(*status)) return decltype(body())();
  return callGuarded(*status, position, body);
}

// For exports without a status.
template <class Body>
auto callSilently(decltype(std::declval<Body>()()) fallback, Body body) {
  const tCancellationOff uncancelled;
  try {
    return body();
  } catch (const corerr::ExceptionBase&) {
    return fallback;
  }
}

template <class Body>
void callSilently(Body body) {
  const tCancellationOff uncancelled;
  try {
    body();
  } catch (const corerr::ExceptionBase&) {
    // There is nobody to tell.
  }
}

// Handles are addresses of the part that all objects behind handles have in common.
telmar_ra_Session* handleOf(telmar::RoutingAdaptorSessionInterface* session) {
  return reinterpret_cast<telmar_ra_Session*>(static_cast<telmar::AdaptorObject*>(session));
}

telmar_ra_TerminalIterator* handleOf(telmar::TerminalIteratorInterface* iterator) {
  return reinterpret_cast<telmar_ra_TerminalIterator*>(
      static_cast<telmar::AdaptorObject*>(iterator));
}

telmar::RoutingAdaptorSessionInterface& sessionOf(telmar_ra_Session* handle) {
  return *static_cast<telmar::RoutingAdaptorSessionInterface*>(
      reinterpret_cast<telmar::AdaptorObject*>(handle));
}

telmar::TerminalIteratorInterface& iteratorOf(telmar_ra_TerminalIterator* handle) {
  return *static_cast<telmar::TerminalIteratorInterface*>(
      reinterpret_cast<telmar::AdaptorObject*>(handle));
}

// One function under two names: either destroys what it is given.
void destroy(void* handle) {
  const tCancellationOff uncancelled;
  delete static_cast<telmar::AdaptorObject*>(handle);
}

}  // namespace

uint32_t telmar_ra_varmex_getAPIVersion(void) { return 3; }

telmar_ra_Session* telmar_ra_varmex_createSession(const char* deviceName,
                                                  telmar_ra_ReallocFunc reallocFunc,
                                                  tStatusRecord* status) {
  return telmar_ra_varmex_createSessionWithDemotionFunc(deviceName, reallocFunc, nullptr, nullptr,
                                                        status);
}

telmar_ra_Session* telmar_ra_varmex_createSessionWithDemotionFunc(const char* deviceName,
                                                                  telmar_ra_ReallocFunc reallocFunc,
                                                                  void (*)(void), void*,
                                                                  tStatusRecord* status) {
  return callGuarded(status, OSTREL_HERE, [=] {
    return handleOf(new pxiRoutingAdaptorSession(deviceName, reallocFunc));
  });
}

void telmar_ra_varmex_destroySession(telmar_ra_Session* session) { destroy(session); }

void telmar_ra_varmex_getHandledConstraints(telmar_ra_Session* session, char** constraintsOut,
                                            tStatusRecord* status) {
  callGuarded(status, OSTREL_HERE,
              [=] { sessionOf(session).getHandledConstraints(constraintsOut); });
}

int32_t telmar_ra_varmex_calculateRoute(telmar_ra_Session* session, const char* seedsJson,
                                        const char* destinationsJson, const void* unused,
                                        char** routesOut, tStatusRecord* status) {
  return callGuarded(status, OSTREL_HERE, [=] {
    return sessionOf(session).calculateRoute(seedsJson, destinationsJson, unused, routesOut);
  });
}

void telmar_ra_varmex_reserveRoute(telmar_ra_Session* session, uint32_t ticket, char** conflictsOut,
                                   tStatusRecord* status) {
  callGuarded(status, OSTREL_HERE, [=] { sessionOf(session).reserveRoute(ticket, conflictsOut); });
}

void telmar_ra_varmex_programRoute(telmar_ra_Session* session, uint32_t ticket,
                                   tStatusRecord* status) {
  callGuarded(status, OSTREL_HERE, [=] { sessionOf(session).programRoute(ticket); });
}

void telmar_ra_varmex_unprogramRoute(telmar_ra_Session* session, uint32_t ticket) {
  callSilently([=] { sessionOf(session).unprogramRoute(ticket); });
}

void telmar_ra_varmex_unreserveRoute(telmar_ra_Session* session, uint32_t ticket) {
  callSilently([=] { sessionOf(session).unreserveRoute(ticket); });
}

void telmar_ra_varmex_beginExceptionalRouteDestruction(telmar_ra_Session* session,
                                                       uint32_t ticket) {
  callSilently([=] { sessionOf(session).beginExceptionalRouteDestruction(ticket); });
}

void telmar_ra_varmex_destroyRoute(telmar_ra_Session* session, uint32_t ticket) {
  callSilently([=] { sessionOf(session).destroyRoute(ticket); });
}

void telmar_ra_varmex_getRouteTerminalPath(telmar_ra_Session* session, uint32_t ticket,
                                           char** pathOut, tStatusRecord* status) {
  callGuarded(status, OSTREL_HERE,
              [=] { sessionOf(session).getRouteTerminalPath(ticket, pathOut); });
}

telmar_ra_TerminalIterator* telmar_ra_varmex_getAllTerminals(telmar_ra_Session* session,
                                                             tStatusRecord* status) {
  return callGuarded(status, OSTREL_HERE,
                     [=] { return handleOf(sessionOf(session).getAllTerminals()); });
}

void telmar_ra_varmex_TerminalIterator_next(telmar_ra_TerminalIterator* iterator,
                                            tStatusRecord* status) {
  callGuarded(status, OSTREL_HERE, [=] { iteratorOf(iterator).next(); });
}

bool telmar_ra_varmex_TerminalIterator_isEnd(telmar_ra_TerminalIterator* iterator) {
  return callSilently(true, [=] { return iteratorOf(iterator).isEnd(); });
}

const char* telmar_ra_varmex_TerminalIterator_getStringAttribute(
    telmar_ra_TerminalIterator* iterator, const char* name, tStatusRecord* status) {
  return callGuarded(status, OSTREL_HERE,
                     [=] { return iteratorOf(iterator).getStringAttribute(name); });
}

bool telmar_ra_varmex_TerminalIterator_getBoolAttribute(telmar_ra_TerminalIterator* iterator,
                                                        const char* name, tStatusRecord* status) {
  return callGuarded(status, OSTREL_HERE,
                     [=] { return iteratorOf(iterator).getBoolAttribute(name); });
}

uint32_t telmar_ra_varmex_TerminalIterator_getU32Attribute(telmar_ra_TerminalIterator* iterator,
                                                           const char* name,
                                                           tStatusRecord* status) {
  return callGuarded(status, OSTREL_HERE,
                     [=] { return iteratorOf(iterator).getU32Attribute(name); });
}

void telmar_ra_varmex_TerminalIterator_resetTerminal(telmar_ra_TerminalIterator* iterator,
                                                     void* argument, tStatusRecord* status) {
  callGuarded(status, OSTREL_HERE, [=] { iteratorOf(iterator).resetTerminal(argument); });
}

// Goes to the session, which alone has the operation; coordinators pass one.
void* telmar_ra_varmex_TerminalIterator_calculateResetTerminal(telmar_ra_Session* session,
                                                               void* first, void* second,
                                                               tStatusRecord* status) {
  return callGuarded(status, OSTREL_HERE,
                     [=] { return sessionOf(session).calculateResetTerminal(first, second); });
}

void telmar_ra_varmex_TerminalIterator_destroy(telmar_ra_TerminalIterator* iterator) {
  destroy(iterator);
}
