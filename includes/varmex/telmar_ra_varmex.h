/* varmex as a routing adaptor: the trigger-line terminals of a module, and who holds which.
 *
 * A routing coordinator opens one session for each routing client on one routing device. A route is
 * a promise about one terminal: calculateRoute answers one route, with a ticket, for each wanted
 * terminal that a seed stands on and that nobody holds under another token. Reserving a route takes
 * the terminal for the seed's token; programming it changes nothing.
 *
 * Status. As in varmex.h: a function with a status does nothing and answers null, 0 or false when
 * the record holds an error; a null status is allowed. Memory failures are -52000 here, but for
 * those of the query functions that createSession calls. JSON texts
 * come in as NUL-terminated bytes and nest at most 4096 deep.
 *
 * Holds. What is held is one line of one module under one text of the device name, within one
 * process, and not the physical line: two modules on one bus, "5.0.0:1" and "5.0.0:3", or two
 * processes do not exclude each other.
 *
 * Replies. A text that goes out through a `char**` slot is written into the buffer that the
 * session's telmar_ra_ReallocFunc returns, which replaces what the slot holds and belongs to the
 * caller. It is called with the session locked: it must not wait for another thread that uses the
 * session.
 *
 * Handles. A null or destroyed session or iterator is undefined behaviour but for the two destroy
 * functions, where null does nothing. A session must outlive its iterators.
 *
 * Threads. Any number of threads may use one session or several; an iterator belongs to one thread
 * at a time.
 */
#ifndef VARMEX_TELMAR_RA_VARMEX_H
#define VARMEX_TELMAR_RA_VARMEX_H

#include <stddef.h>
#include <stdint.h>

#include "varmex/export.h"
#include "varmex/status.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct telmar_ra_Session telmar_ra_Session;                   /* opaque */
typedef struct telmar_ra_TerminalIterator telmar_ra_TerminalIterator; /* opaque */

/* Answers a buffer of at least `size` bytes in the place of `existing`, or null on failure. realloc
 * will do. */
typedef void*(VARMEX_CALL* telmar_ra_ReallocFunc)(void* existing, size_t size);

/* Status codes of this family, beside those of varmex.h. */
enum {
  telmar_ra_errorReplyNotDelivered = -313314, /* the reallocation function answered null */
  telmar_ra_errorInvalidArgument = -313325,   /* a null argument, or an unknown ticket */
  telmar_ra_errorRoutingFault = -313328,      /* no ticket left, or an unknown seed terminal */
  telmar_ra_errorResourcesInUse = -89137,     /* the terminal is held under another token */
  telmar_ra_errorFeatureUnsupported = -52002, /* an operation that this adaptor does not offer */
  telmar_ra_errorInvalidJson = -52005         /* a malformed seed or destination list */
};

/* 3. */
VARMEX_EXPORT uint32_t VARMEX_CALL telmar_ra_varmex_getAPIVersion(void);

/* Opens a session on the device that `deviceName` names: "BUS.DEVICE.FUNCTION:MASK" in decimal,
 * with mask bit 0 (1) for PXI_Trig0 to 7, the slot's trigger bus, bit 1 (2) for PXI_Star, its star
 * line, bit 2 (4) for PXIe_DStarA, B and C, its differential star lines, PXI Express devices only.
 * The first session with a name reads the description, once for the life of the library. Fails with
 * varmex_errorInvalidParameter for a name without the four numbers and with whatever the query
 * functions fail with, also for a group that the slot does not have. */
VARMEX_EXPORT telmar_ra_Session* VARMEX_CALL telmar_ra_varmex_createSession(
    const char* deviceName, telmar_ra_ReallocFunc reallocFunc, tStatusRecord* status);

/* The same; no route is ever demoted, so the last two arguments are not used. */
VARMEX_EXPORT telmar_ra_Session* VARMEX_CALL telmar_ra_varmex_createSessionWithDemotionFunc(
    const char* deviceName, telmar_ra_ReallocFunc reallocFunc,
    void(VARMEX_CALL* demotionFunc)(void), void* demotionContext, tStatusRecord* status);

/* Ends a session. Terminals that it holds stay held under their tokens. */
VARMEX_EXPORT void VARMEX_CALL telmar_ra_varmex_destroySession(telmar_ra_Session* session);

/* Replies "[]": this adaptor handles no constraint. */
VARMEX_EXPORT void VARMEX_CALL telmar_ra_varmex_getHandledConstraints(telmar_ra_Session* session,
                                                                      char** constraintsOut,
                                                                      tStatusRecord* status);

/* Calculates routes. `seedsJson` is an array of objects with "terminal", "cost", "constraints" and
 * maybe "srcDeviceToken", `destinationsJson` an array of terminal names; `unused` is not read.
 * Replies an array of {"ticket","destination","cost","indexOfStartingSeed","constraints"}. A wanted
 * terminal that no seed stands on, or that is held, is left out. Answers 0. Fails with
 * telmar_ra_errorInvalidJson, telmar_ra_errorRoutingFault for a seed on an unknown terminal or when
 * 1024 tickets are in use, telmar_ra_errorInvalidArgument, telmar_ra_errorReplyNotDelivered; and
 * then no route was made. */
VARMEX_EXPORT int32_t VARMEX_CALL telmar_ra_varmex_calculateRoute(
    telmar_ra_Session* session, const char* seedsJson, const char* destinationsJson,
    const void* unused, char** routesOut, tStatusRecord* status);

/* Takes the route's terminal under its token. Fails with telmar_ra_errorResourcesInUse when it is
 * held under another one; if it is this session that holds it and `conflictsOut` is not null, that
 * replies [{"sessionId","ticket"}]. */
VARMEX_EXPORT void VARMEX_CALL telmar_ra_varmex_reserveRoute(telmar_ra_Session* session,
                                                             uint32_t ticket, char** conflictsOut,
                                                             tStatusRecord* status);

/* Checks the ticket. */
VARMEX_EXPORT void VARMEX_CALL telmar_ra_varmex_programRoute(telmar_ra_Session* session,
                                                             uint32_t ticket,
                                                             tStatusRecord* status);

/* Does nothing. */
VARMEX_EXPORT void VARMEX_CALL telmar_ra_varmex_unprogramRoute(telmar_ra_Session* session,
                                                               uint32_t ticket);

/* Gives the route's terminal back, once no other route of the session holds it. An unknown ticket
 * does nothing. */
VARMEX_EXPORT void VARMEX_CALL telmar_ra_varmex_unreserveRoute(telmar_ra_Session* session,
                                                               uint32_t ticket);

/* Does nothing. */
VARMEX_EXPORT void VARMEX_CALL
telmar_ra_varmex_beginExceptionalRouteDestruction(telmar_ra_Session* session, uint32_t ticket);

/* Ends a route in any state, its reservation with it. An unknown ticket does nothing. */
VARMEX_EXPORT void VARMEX_CALL telmar_ra_varmex_destroyRoute(telmar_ra_Session* session,
                                                             uint32_t ticket);

/* Replies an array of one terminal name: that of the device's first terminal, whichever the route
 * has. */
VARMEX_EXPORT void VARMEX_CALL telmar_ra_varmex_getRouteTerminalPath(telmar_ra_Session* session,
                                                                     uint32_t ticket,
                                                                     char** pathOut,
                                                                     tStatusRecord* status);

/* An iterator at the device's first terminal, owned by the caller. */
VARMEX_EXPORT telmar_ra_TerminalIterator* VARMEX_CALL
telmar_ra_varmex_getAllTerminals(telmar_ra_Session* session, tStatusRecord* status);

/* Moves on by one, past the end too. */
VARMEX_EXPORT void VARMEX_CALL
telmar_ra_varmex_TerminalIterator_next(telmar_ra_TerminalIterator* iterator, tStatusRecord* status);

/* Whether the iterator is behind the last terminal. */
VARMEX_EXPORT bool VARMEX_CALL
telmar_ra_varmex_TerminalIterator_isEnd(telmar_ra_TerminalIterator* iterator);

/* Attributes of the terminal by name: "name", "visibility", "busType", "busName", "canonicalName"
 * as texts, owned by the library for its life; "isExternal", "isOwned", "isAlias", "isMaskedOut" as
 * booleans; "busLine" as a number. Any other name, and any name at the end, answers null, false or
 * 0 without a failure. */
VARMEX_EXPORT const char* VARMEX_CALL telmar_ra_varmex_TerminalIterator_getStringAttribute(
    telmar_ra_TerminalIterator* iterator, const char* name, tStatusRecord* status);
VARMEX_EXPORT bool VARMEX_CALL telmar_ra_varmex_TerminalIterator_getBoolAttribute(
    telmar_ra_TerminalIterator* iterator, const char* name, tStatusRecord* status);
VARMEX_EXPORT uint32_t VARMEX_CALL telmar_ra_varmex_TerminalIterator_getU32Attribute(
    telmar_ra_TerminalIterator* iterator, const char* name, tStatusRecord* status);

/* Fails with telmar_ra_errorFeatureUnsupported. */
VARMEX_EXPORT void VARMEX_CALL telmar_ra_varmex_TerminalIterator_resetTerminal(
    telmar_ra_TerminalIterator* iterator, void* argument, tStatusRecord* status);

/* An operation of the session in spite of its name. Fails with telmar_ra_errorFeatureUnsupported.
 */
VARMEX_EXPORT void* VARMEX_CALL telmar_ra_varmex_TerminalIterator_calculateResetTerminal(
    telmar_ra_Session* session, void* first, void* second, tStatusRecord* status);

VARMEX_EXPORT void VARMEX_CALL
telmar_ra_varmex_TerminalIterator_destroy(telmar_ra_TerminalIterator* iterator);

#ifdef __cplusplus
}
#endif

#endif
