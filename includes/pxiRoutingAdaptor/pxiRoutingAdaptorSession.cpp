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
  std::construct_at(&routes_);
  std::construct_at(&spareRoutes_);
  std::construct_at(&seeds_);
  std::construct_at(&destinations_);
  std::construct_at(&firstSeeds_);
  std::construct_at(&tickets_);
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
  matchDestinations();
  tRoutes routes = makeRoutes();
  telmar::Reply reply;
  for (const RouteRecord& route : routes) {
    const std::string& name = terminals()[route.terminal].quotedName;
    reply.addRoute({route.ticket, name, route.cost, route.seedIndex});
  }
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

// A destination is reached from the first seed that stands on it, and from no other. The rest are
// dropped.
void pxiRoutingAdaptorSession::matchDestinations() {
  constexpr std::uint32_t kNone = 0xFFFFFFFF;
  firstSeeds_.assign(terminals().size(), kNone);
  for (std::size_t seed = seeds_.size(); seed-- > 0;) {
    firstSeeds_[seeds_[seed].terminal] = static_cast<std::uint32_t>(seed);
  }
  std::erase_if(destinations_, [this](std::uint32_t terminal) {
    const std::uint32_t seed = firstSeeds_[terminal];
    return seed == kNone || !device_->isAvailable(terminal, seeds_[seed].token);
  });
}

pxiRoutingAdaptorSession::tRoutes pxiRoutingAdaptorSession::makeRoutes() {
  const std::size_t spare = std::min(destinations_.size(), spareRoutes_.size());
  tRoutes routes;
  routes.splice(routes.end(), spareRoutes_, spareRoutes_.begin(),
                std::next(spareRoutes_.begin(), static_cast<std::ptrdiff_t>(spare)));
  routes.resize(destinations_.size());
  auto route = routes.begin();
  for (const std::uint32_t terminal : destinations_) {
    route->ticket = allocateTicket();
    if (route->ticket >= tickets_.size()) tickets_.resize(route->ticket + 1);
    route->terminal = terminal;
    route->seedIndex = firstSeeds_[terminal];
    route->token = seeds_[route->seedIndex].token;
    ++route;
  }
  return routes;
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
  tFailure(kRoutingFault, OSTREL_HERE).raise();
}

bool pxiRoutingAdaptorSession::isTicketUsed(std::uint32_t ticket) const {
  return ticket < tickets_.size() && tickets_[ticket].uses > 0;
}

void pxiRoutingAdaptorSession::adopt(tRoutes& routes) {
  for (auto route = routes.begin(); route != routes.end(); ++route) {
    tTicket& ticket = tickets_[route->ticket];
    if (++ticket.uses == 1) ticket.first = route;
  }
  routes_.splice(routes_.end(), routes);
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
  if (findRoute(ticket) == routes_.end()) return;
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
  const auto route = findRoute(ticket);
  if (route == routes_.end()) return;
  if (findReservation(ticket) != reservations_.end()) unreserveRoute(ticket);
  if (--tickets_[ticket].uses > 0) {
    tickets_[ticket].first =
        std::find_if(std::next(route), routes_.end(),
                     [ticket](const RouteRecord& other) { return other.ticket == ticket; });
  }
  constexpr std::size_t kMostKept = 256;  // bytes of a token
  if (spareRoutes_.size() < kLastTicket && route->token.capacity() <= kMostKept) {
    spareRoutes_.splice(spareRoutes_.begin(), routes_, route);
  } else {
    routes_.erase(route);
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

pxiRoutingAdaptorSession::tRoutes::iterator pxiRoutingAdaptorSession::findRoute(
    std::uint32_t ticket) {
  return isTicketUsed(ticket) ? tickets_[ticket].first : routes_.end();
}

const pxiRoutingAdaptorSession::RouteRecord& pxiRoutingAdaptorSession::requireRoute(
    std::uint32_t ticket) {
  const auto route = findRoute(ticket);
  if (route == routes_.end()) tFailure(kInvalidArgument, OSTREL_HERE).raise();
  return *route;
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

void pxiRoutingAdaptorSession::deliver(const telmar::Reply& reply, char** out) const {
  deliver(reply.text(), reply.bufferSize(), out);
}

}  // namespace varmex::nCorPxiRoutingAdaptor
