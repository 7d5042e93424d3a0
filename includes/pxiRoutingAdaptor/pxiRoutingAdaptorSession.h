#ifndef PXIROUTINGADAPTOR_PXIROUTINGADAPTORSESSION_H
#define PXIROUTINGADAPTOR_PXIROUTINGADAPTORSESSION_H

#include <array>
#include <forward_list>
#include <list>
#include <set>
#include <vector>

#include "ostrel/quarks/synchronization.h"
#include "pxiRoutingAdaptor/pxiRoutingAdaptorDevice.h"
#include "telmar/TelmarUtils.h"
#include "telmar/interfaces.h"

namespace varmex::nCorPxiRoutingAdaptor {

using tReallocFunc = void* (*)(void* existing, std::size_t size);

// One routing client on one device: the routes that it has calculated and the terminals that it
// holds. Operations may come from several threads. In the child of a fork, a session that a thread
// of the parent was just using begins anew. Its destruction gives no terminal back.
class pxiRoutingAdaptorSession : public telmar::RoutingAdaptorSessionInterface {
 public:
  pxiRoutingAdaptorSession(const char* deviceName, tReallocFunc reallocFunc);

  void getHandledConstraints(char** constraintsOut) override;
  std::int32_t calculateRoute(const char* seedsJson, const char* destinationsJson,
                              const void* unused, char** routesOut) override;
  void reserveRoute(std::uint32_t ticket, char** conflictsOut) override;
  void programRoute(std::uint32_t ticket) override;
  void unprogramRoute(std::uint32_t ticket) override;
  void unreserveRoute(std::uint32_t ticket) override;
  void beginExceptionalRouteDestruction(std::uint32_t ticket) override;
  void destroyRoute(std::uint32_t ticket) override;
  void getRouteTerminalPath(std::uint32_t ticket, char** pathOut) override;
  telmar::TerminalIteratorInterface* getAllTerminals() override;
  void* calculateResetTerminal(void* first, void* second) override;

  const std::vector<TerminalRecord>& terminals() const { return device_->terminals(); }

 private:
  static constexpr std::uint32_t kLastTicket = 1024;
  static constexpr std::uint32_t kNoSeed = 0xFFFFFFFF;

  struct RouteRecord {
    std::uint32_t ticket = 0;
    std::uint32_t terminal = 0;
    std::string token;
  };
  using tRoutes = std::forward_list<RouteRecord>;

  // Never without a ticket. All its tickets are of routes with its terminal and token.
  struct ReservationRecord {
    std::set<std::uint32_t> tickets;
    std::uint32_t terminal;
    std::string token;
  };
  using tReservations = std::list<ReservationRecord>;

  // The session for one operation.
  class tGuard {
   public:
    explicit tGuard(pxiRoutingAdaptorSession& session);

   private:
    tCriticalSection::tHeld held_;
  };

  // Gives back what a calculation took, however it ends.
  class tCalculation {
   public:
    explicit tCalculation(pxiRoutingAdaptorSession& session) : session_(session) {}
    tCalculation(const tCalculation&) = delete;
    tCalculation& operator=(const tCalculation&) = delete;
    ~tCalculation();

   private:
    pxiRoutingAdaptorSession& session_;
  };

  void beginAnew();
  void findFirstSeeds();
  void makeRoutes(tRoutes& routes, telmar::Reply& reply);
  tRoutes::iterator addRecord(tRoutes& routes, tRoutes::iterator last);  // behind the last
  std::uint32_t allocateTicket();                                        // 0 when none is left
  bool isTicketUsed(std::uint32_t ticket) const;
  const RouteRecord& requireRoute(std::uint32_t ticket) const;
  tReservations::iterator findReservation(std::uint32_t ticket);
  void adopt(tRoutes& routes);
  void deliver(std::string_view text, std::size_t bufferSize, char** out) const;
  void deliver(telmar::Reply& reply, char** out) const;
  [[noreturn]] void raiseConflict(const ReservationRecord& holder, char** conflictsOut) const;

  pxiRoutingAdaptorDevice* device_ = nullptr;
  tReservations reservations_;
  tRoutes spareRoutes_;  // the records of some destroyed routes, for new ones
  std::size_t spareCount_ = 0;
  // Of the running calculation until its delivery, kept for their memory. Of each terminal the
  // first seed on it.
  std::vector<telmar::Seed> seeds_;
  std::vector<std::uint32_t> destinations_;
  std::vector<std::uint32_t> firstSeeds_;
  // The live routes of each ticket up to the highest so far, in the order of their calculation: the
  // first is the one that the ticket stands for.
  struct tTicket {
    tRoutes routes;
    tRoutes::iterator last;  // if there is any
  };
  std::vector<tTicket> tickets_;
  std::uint32_t nextTicket_ = 1;
  tCriticalSection lock_;  // of all the above but the device; destroyRoute enters it twice
  tReallocFunc reallocFunc_;
};

// Where every operation that the adaptor does not offer ends.
[[noreturn]] void raiseFeatureUnsupported();

}  // namespace varmex::nCorPxiRoutingAdaptor

#endif
