#include "pxiRoutingAdaptor/pxiRoutingAdaptorSession.h"

#include <algorithm>
#include <cstring>

#include "ostrel/quarks/throwingStatus.h"
#include "pxiRoutingAdaptor/TerminalIterator.h"

namespace varmex::nCorPxiRoutingAdaptor {

namespace {

constexpr tErrorCode kNotDelivered{-313314, "(-313300-14)"};
constexpr tErrorCode kInvalidArgument{-313325, "(-313300-25)"};
constexpr tErrorCode kResourcesInUse{-89137, "telmar::errors::kErrorResourcesInUseForRoute"};
constexpr tErrorCode kFeatureUnsupported{-52002, "nOSTRELS100::tStatus::kFeatureUnsupported"};

using tGuard = std::lock_guard<tCriticalSection>;

void requireArguments(std::initializer_list<const void*> arguments,
                      const tSourcePosition& position) {
  for (const void* argument : arguments) {
    if (!argument) tFailure(kInvalidArgument, position).raise();
  }
}

class tDeviceTerminals final : public telmar::TerminalFinder {
 public:
  explicit tDeviceTerminals(const pxiRoutingAdaptorDevice& device) : device_(device) {}

  std::uint32_t findForSeed(std::string_view name) const override {
    const auto terminal = device_.findTerminal(name);
    if (!terminal) tFailure(kRoutingFault, OSTREL_HERE).raise();
    return *terminal;
  }
  std::optional<std::uint32_t> findForDestination(std::string_view name) const override {
    return device_.findTerminal(name);
  }

 private:
  const pxiRoutingAdaptorDevice& device_;
};

}  // namespace

void raiseFeatureUnsupported() { tFailure(kFeatureUnsupported, OSTREL_HERE).raise(); }

pxiRoutingAdaptorSession::pxiRoutingAdaptorSession(const char* deviceName, tReallocFunc reallocFunc)
    : lock_(tThrowingStatus<tFixedStatus>()), reallocFunc_(reallocFunc) {
  const tGuard held(lock_);
  device_ = getRoutingDevice(deviceName ? deviceName : "");
  if (!device_) tFailure(kRoutingFault, OSTREL_HERE).raise();
}

void pxiRoutingAdaptorSession::getHandledConstraints(char** constraintsOut) {
  requireArguments({constraintsOut}, OSTREL_HERE);
  constexpr const char kNone[] = "[]";
  deliver(kNone, sizeof kNone, constraintsOut);
}

std::int32_t pxiRoutingAdaptorSession::calculateRoute(const char* seedsJson,
                                                      const char* destinationsJson, const void*,
                                                      char** routesOut) {
  requireArguments({seedsJson, destinationsJson, routesOut}, OSTREL_HERE);
  const tGuard held(lock_);
  const tDeviceTerminals finder(*device_);
  const auto seeds = telmar::parseSeedList(seedsJson, finder);
  const auto destinations = telmar::parseTerminalList(destinationsJson, finder);
  tRoutes routes = matchRoutes(seeds, destinations);
  telmar::Reply reply;
  for (const RouteRecord& route : routes) {
    const char* const name = terminals()[route.terminal].name.c_str();
    reply.addRoute({route.ticket, name, route.cost, route.seedIndex});
  }
  // Until the delivery is done no route exists; behind it nothing fails.
  deliver(reply, routesOut);
  adopt(routes);
  return 0;
}

// A destination is reached from the first seed that stands on it, and from no other.
pxiRoutingAdaptorSession::tRoutes pxiRoutingAdaptorSession::matchRoutes(
    const std::vector<telmar::Seed>& seeds, const std::vector<std::uint32_t>& destinations) {
  constexpr std::uint32_t kNone = 0xFFFFFFFF;
  std::vector<std::uint32_t> firstSeeds(terminals().size(), kNone);
  for (std::size_t seed = seeds.size(); seed-- > 0;) {
    firstSeeds[seeds[seed].terminal] = static_cast<std::uint32_t>(seed);
  }
  tRoutes routes;
  const auto held = device_->lockOwners();
  for (const std::uint32_t terminal : destinations) {
    const std::uint32_t seed = firstSeeds[terminal];
    if (seed == kNone || !device_->isAvailable(terminal, seeds[seed].token)) continue;
    routes.push_back({allocateTicket(), terminal, 0, seed, std::string(seeds[seed].token)});
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
  return ticketUses_[ticket] > 0;
}

void pxiRoutingAdaptorSession::adopt(tRoutes& routes) {
  for (const RouteRecord& route : routes) ++ticketUses_[route.ticket];
  routes_.splice(routes_.end(), routes);
}

void pxiRoutingAdaptorSession::reserveRoute(std::uint32_t ticket, char** conflictsOut) {
  const tGuard held(lock_);
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
  const tGuard held(lock_);
  requireRoute(ticket);
}

void pxiRoutingAdaptorSession::unprogramRoute(std::uint32_t) {}

void pxiRoutingAdaptorSession::unreserveRoute(std::uint32_t ticket) {
  const tGuard held(lock_);
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
  const tGuard held(lock_);
  const auto route = findRoute(ticket);
  if (route == routes_.end()) return;
  if (findReservation(ticket) != reservations_.end()) unreserveRoute(ticket);
  --ticketUses_[ticket];
  routes_.erase(route);
}

// The names are those of the table's first rows, as many as the route has terminals, and not of the
// route's own: coordinators have always been given the first terminal.
void pxiRoutingAdaptorSession::getRouteTerminalPath(std::uint32_t ticket, char** pathOut) {
  requireArguments({pathOut}, OSTREL_HERE);
  const tGuard held(lock_);
  const std::array<std::uint32_t, 1> path{requireRoute(ticket).terminal};
  telmar::Reply reply;
  for (std::size_t row = 0; row < path.size(); ++row) {
    reply.addString(terminals()[row].name.c_str());
  }
  deliver(reply, pathOut);
}

telmar::TerminalIteratorInterface* pxiRoutingAdaptorSession::getAllTerminals() {
  return new TerminalIterator(*this);
}

void* pxiRoutingAdaptorSession::calculateResetTerminal(void*, void*) { raiseFeatureUnsupported(); }

pxiRoutingAdaptorSession::tRoutes::iterator pxiRoutingAdaptorSession::findRoute(
    std::uint32_t ticket) {
  return std::find_if(routes_.begin(), routes_.end(),
                      [ticket](const RouteRecord& route) { return route.ticket == ticket; });
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

void pxiRoutingAdaptorSession::deliver(const char* text, std::size_t bufferSize, char** out) const {
  *out = reallocFunc_ ? static_cast<char*>(reallocFunc_(*out, bufferSize)) : nullptr;
  if (!*out) tFailure(kNotDelivered, OSTREL_HERE).raise();
  std::memcpy(*out, text, std::strlen(text) + 1);
}

void pxiRoutingAdaptorSession::deliver(const telmar::Reply& reply, char** out) const {
  deliver(reply.text(), reply.bufferSize(), out);
}

}  // namespace varmex::nCorPxiRoutingAdaptor
