#include "pxiRoutingAdaptor/pxiRoutingAdaptorSession.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "ostrel/quarks/throwingStatus.h"
#include "pxiRoutingAdaptor/TerminalIterator.h"

namespace varmex::nCorPxiRoutingAdaptor {

namespace {

constexpr tErrorCode kNotDelivered{-313314, "(-313300-14)"};
constexpr tErrorCode kInvalidArgument{-313325, "(-313300-25)"};
constexpr tErrorCode kResourcesInUse{-89137, "telmar::errors::kErrorResourcesInUseForRoute"};
constexpr tErrorCode kFeatureUnsupported{-52002, "nOSTRELS100::tStatus::kFeatureUnsupported"};

void requireArguments(std::initializer_list<const void*> arguments,
                      const tSourcePosition& position) {
  for (const void* argument : arguments) {
    if (!argument) tFailure(kInvalidArgument, position).raise();
  }
}

// Empties a list for the next calculation. Memory for an exceptional number is not kept.
template <class Entry>
void forget(std::vector<Entry>& entries) {
  constexpr std::size_t kMostKept = 256;
  if (entries.capacity() > kMostKept) std::vector<Entry>().swap(entries);
  entries.clear();
}

void raiseUnknownTerminal() { tFailure(kRoutingFault, OSTREL_HERE).raise(); }

}  // namespace

void raiseFeatureUnsupported() { tFailure(kFeatureUnsupported, OSTREL_HERE).raise(); }

pxiRoutingAdaptorSession::pxiRoutingAdaptorSession(const char* deviceName, tReallocFunc reallocFunc)
    : lock_(tThrowingStatus<tFixedStatus>()), reallocFunc_(reallocFunc) {
  device_ = getRoutingDevice(deviceName ? deviceName : "");
  if (!device_) tFailure(kRoutingFault, OSTREL_HERE).raise();
}

pxiRoutingAdaptorSession::tGuard::tGuard(pxiRoutingAdaptorSession& session) : held_(session.lock_) {
  if (held_.wasAbandoned()) session.beginAnew();
}

// What there was is in any state, and left as it is.
void pxiRoutingAdaptorSession::beginAnew() {
  std::construct_at(&reservations_);
  std::construct_at(&spareRoutes_);
  std::construct_at(&seeds_);
  std::construct_at(&destinations_);
  std::construct_at(&firstSeeds_);
  std::construct_at(&tickets_);
  spareCount_ = 0;
  nextTicket_ = 1;
  for (std::uint32_t terminal = 0; terminal < terminals().size(); ++terminal) {
    device_->releaseTerminal(this, terminal);
  }
}

void pxiRoutingAdaptorSession::getHandledConstraints(char** constraintsOut) {
  requireArguments({constraintsOut}, OSTREL_HERE);
  constexpr std::string_view kNone = "[]";
  deliver(kNone, kNone.size() + 1, constraintsOut);
}

std::int32_t pxiRoutingAdaptorSession::calculateRoute(const char* seedsJson,
                                                      const char* destinationsJson, const void*,
                                                      char** routesOut) {
  requireArguments({seedsJson, destinationsJson, routesOut}, OSTREL_HERE);
  const tGuard held(*this);
  const tCalculation calculation(*this);
  telmar::parseSeedList(seedsJson, device_->names(), raiseUnknownTerminal, seeds_);
  telmar::parseTerminalList(destinationsJson, device_->names(), destinations_);
  findFirstSeeds();
  tRoutes routes;
  telmar::Reply reply;
  makeRoutes(routes, reply);
  // Until the delivery is done no route exists; behind it nothing fails.
  deliver(reply, routesOut);
  adopt(routes);
  return 0;
}

// The seeds refer to a text that is gone soon.
pxiRoutingAdaptorSession::tCalculation::~tCalculation() {
  forget(session_.seeds_);
  forget(session_.destinations_);
}

void pxiRoutingAdaptorSession::findFirstSeeds() {
  firstSeeds_.assign(terminals().size(), kNoSeed);
  for (std::size_t seed = seeds_.size(); seed-- > 0;) {
    firstSeeds_[seeds_[seed].terminal] = static_cast<std::uint32_t>(seed);
  }
}

// A destination is reached from the first seed that stands on it, and from no other. The rest are
// dropped.
void pxiRoutingAdaptorSession::makeRoutes(tRoutes& routes, telmar::Reply& reply) {
  auto last = routes.before_begin();
  for (const std::uint32_t terminal : destinations_) {
    const std::uint32_t seed = firstSeeds_[terminal];
    if (seed == kNoSeed || !device_->isAvailable(terminal, seeds_[seed].token)) continue;
    last = addRecord(routes, last);
    last->ticket = allocateTicket();
    if (last->ticket == 0) tFailure(kRoutingFault, OSTREL_HERE).raise();
    if (last->ticket >= tickets_.size()) tickets_.resize(last->ticket + 1);
    last->terminal = terminal;
    last->token = seeds_[seed].token;
    reply.addRoute(last->ticket, terminals()[terminal].quotedName, seed);
  }
}

pxiRoutingAdaptorSession::tRoutes::iterator pxiRoutingAdaptorSession::addRecord(
    tRoutes& routes, tRoutes::iterator last) {
  if (spareRoutes_.empty()) return routes.emplace_after(last);
  routes.splice_after(last, spareRoutes_, spareRoutes_.before_begin());
  --spareCount_;
  return std::next(last);
}

// Looks at the session's routes alone: the routes of the running call are not among them yet, so a
// call with very many destinations may give one ticket twice.
std::uint32_t pxiRoutingAdaptorSession::allocateTicket() {
  for (std::uint32_t attempt = 0; attempt <= kLastTicket; ++attempt) {
    const std::uint32_t ticket = nextTicket_;
    const bool isLast = ticket > kLastTicket;
    if (!isTicketUsed(ticket) && !isLast) {
      nextTicket_ = ticket + 1;
      return ticket;
    }
    nextTicket_ = isLast ? 1 : ticket + 1;
  }
  return 0;
}

bool pxiRoutingAdaptorSession::isTicketUsed(std::uint32_t ticket) const {
  return ticket < tickets_.size() && !tickets_[ticket].routes.empty();
}

void pxiRoutingAdaptorSession::adopt(tRoutes& routes) {
  while (!routes.empty()) {
    tTicket& ticket = tickets_[routes.front().ticket];
    const auto last = ticket.routes.empty() ? ticket.routes.before_begin() : ticket.last;
    ticket.routes.splice_after(last, routes, routes.before_begin());
    ticket.last = std::next(last);
  }
}

void pxiRoutingAdaptorSession::reserveRoute(std::uint32_t ticket, char** conflictsOut) {
  const tGuard held(*this);
  const RouteRecord& route = requireRoute(ticket);
  for (ReservationRecord& reservation : reservations_) {
    if (reservation.terminal != route.terminal) continue;
    if (reservation.token == route.token) {
      reservation.tickets.insert(ticket);
      return;
    }
    if (conflictsOut) raiseConflict(reservation, conflictsOut);
  }
  tReservations added{{{ticket}, route.terminal, route.token}};
  if (!device_->reserveTerminal(this, route.token, route.terminal)) {
    tFailure(kResourcesInUse, OSTREL_HERE).raise();
  }
  reservations_.splice(reservations_.end(), added);
}

void pxiRoutingAdaptorSession::raiseConflict(const ReservationRecord& holder,
                                             char** conflictsOut) const {
  telmar::Reply reply;
  reply.addConflict({reinterpret_cast<std::uintptr_t>(this), *holder.tickets.begin()});
  deliver(reply, conflictsOut);
  tFailure(kResourcesInUse, OSTREL_HERE).raise();
}

void pxiRoutingAdaptorSession::programRoute(std::uint32_t ticket) {
  const tGuard held(*this);
  requireRoute(ticket);
}

void pxiRoutingAdaptorSession::unprogramRoute(std::uint32_t) {}

void pxiRoutingAdaptorSession::unreserveRoute(std::uint32_t ticket) {
  const tGuard held(*this);
  if (!isTicketUsed(ticket)) return;
  const auto reservation = findReservation(ticket);
  if (reservation == reservations_.end()) return;
  reservation->tickets.erase(ticket);
  if (!reservation->tickets.empty()) return;
  device_->releaseTerminal(this, reservation->terminal);
  reservations_.erase(reservation);
}

void pxiRoutingAdaptorSession::beginExceptionalRouteDestruction(std::uint32_t) {}

void pxiRoutingAdaptorSession::destroyRoute(std::uint32_t ticket) {
  const tGuard held(*this);
  if (!isTicketUsed(ticket)) return;
  if (findReservation(ticket) != reservations_.end()) unreserveRoute(ticket);
  tRoutes& routes = tickets_[ticket].routes;
  constexpr std::size_t kMostKept = 256;  // bytes of a token
  if (spareCount_ < kLastTicket && routes.front().token.capacity() <= kMostKept) {
    spareRoutes_.splice_after(spareRoutes_.before_begin(), routes, routes.before_begin());
    ++spareCount_;
  } else {
    routes.pop_front();
  }
}

// The names are those of the table's first rows, as many as the route has terminals, and not of the
// route's own: coordinators have always been given the first terminal.
void pxiRoutingAdaptorSession::getRouteTerminalPath(std::uint32_t ticket, char** pathOut) {
  requireArguments({pathOut}, OSTREL_HERE);
  const tGuard held(*this);
  const std::array<std::uint32_t, 1> path{requireRoute(ticket).terminal};
  telmar::Reply reply;
  for (std::size_t row = 0; row < path.size(); ++row) {
    reply.addText(terminals()[row].quotedName);
  }
  deliver(reply, pathOut);
}

telmar::TerminalIteratorInterface* pxiRoutingAdaptorSession::getAllTerminals() {
  return new TerminalIterator(*this);
}

void* pxiRoutingAdaptorSession::calculateResetTerminal(void*, void*) { raiseFeatureUnsupported(); }

const pxiRoutingAdaptorSession::RouteRecord& pxiRoutingAdaptorSession::requireRoute(
    std::uint32_t ticket) const {
  if (!isTicketUsed(ticket)) tFailure(kInvalidArgument, OSTREL_HERE).raise();
  return tickets_[ticket].routes.front();
}

pxiRoutingAdaptorSession::tReservations::iterator pxiRoutingAdaptorSession::findReservation(
    std::uint32_t ticket) {
  return std::find_if(
      reservations_.begin(), reservations_.end(),
      [ticket](const ReservationRecord& record) { return record.tickets.contains(ticket); });
}

void pxiRoutingAdaptorSession::deliver(std::string_view text, std::size_t bufferSize,
                                       char** out) const {
  *out = reallocFunc_ ? static_cast<char*>(reallocFunc_(*out, bufferSize)) : nullptr;
  if (!*out) tFailure(kNotDelivered, OSTREL_HERE).raise();
  std::memcpy(*out, text.data(), text.size());
  (*out)[text.size()] = '\0';
}

void pxiRoutingAdaptorSession::deliver(telmar::Reply& reply, char** out) const {
  const std::string_view text = reply.close();
  deliver(text, reply.bufferSize(), out);
}

}  // namespace varmex::nCorPxiRoutingAdaptor
