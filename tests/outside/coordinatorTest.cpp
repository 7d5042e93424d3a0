// The life of a routing coordinator: clients on two modules that calculate, reserve, join,
// conflict, release and die. Every answer is held against a small model of who holds what.

#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <utility>

#include "tests/support/model.h"
#include "tests/support/routing.h"
#include "tests/support/threads.h"
#include "varmex/varmex.hpp"

namespace test {

namespace {

// Who holds the terminals of a module, and under which tokens. A holder is a session, known by its
// address alone: a new session in the place of a dead one holds what that held.
struct tDevice {
  bool mayTake(const std::string& terminal, const std::string& token) {
    return tokens[terminal].empty() || tokens[terminal] == token;
  }

  std::string name;
  std::map<std::string, std::string> tokens{};
  std::map<std::string, std::set<const void*>> holders{};
};

// One client: a session with its routes, and what it holds.
class tClient {
 public:
  tClient(tDevice& device, unsigned seed) : device_(device), random_(seed) { open(); }

  void step() {
    const std::string terminal = "PXI_Trig" + std::to_string(pick(8));
    const std::string token(1, "abc"[pick(3)]);
    const std::size_t act = pick(8);
    if (act < 3) return calculateAndReserve(terminal, token);
    if (act < 5) return releaseOne(&telmar_ra_varmex_unreserveRoute, false);
    if (act < 7) return releaseOne(&telmar_ra_varmex_destroyRoute, true);
    if (pick(40) == 0) open();
  }

 private:
  struct tRoute {
    std::uint32_t ticket;
    std::string terminal;
    std::string token;
    bool reserved;
  };

  std::size_t pick(std::size_t bound) { return random_() % bound; }

  // A dead session's terminals stay held under their tokens.
  void open() {
    tStatus status;
    routes_.clear();
    session_ = openRouting(device_.name, status);
    ASSERT_TRUE(session_) << status.text();
  }

  // What tells that this session holds a terminal: the lowest ticket that does.
  std::string conflictOn(const std::string& terminal) const {
    std::set<std::uint32_t> tickets;
    for (const tRoute& route : routes_) {
      if (route.reserved && route.terminal == terminal) tickets.insert(route.ticket);
    }
    if (tickets.empty()) return "";
    const auto identity = reinterpret_cast<std::uintptr_t>(session_.get());
    return R"([{"sessionId":)" + std::to_string(identity) + R"(,"ticket":)" +
           std::to_string(*tickets.begin()) + "}]";
  }

  void calculateAndReserve(const std::string& terminal, const std::string& token) {
    tStatus status;
    const auto routes = nlohmann::json::parse(route(session_, terminal, token, status));
    ASSERT_EQ(status.code(), 0) << status.text();
    ASSERT_EQ(routes.size(), device_.mayTake(terminal, token) ? 1U : 0U);
    if (!routes.empty()) routes_.push_back({routes[0]["ticket"], terminal, token, false});
    if (!routes_.empty()) reserve(routes_[pick(routes_.size())]);
  }

  void reserve(tRoute& route) {
    tStatus status;
    tText conflicts;
    telmar_ra_varmex_reserveRoute(session_.get(), route.ticket, &conflicts.text, status);
    const bool mayTake = device_.mayTake(route.terminal, route.token);
    ASSERT_EQ(takeFailure(status), mayTake ? "" : kInUse);
    ASSERT_EQ(conflicts.text ? conflicts.text : "", mayTake ? "" : conflictOn(route.terminal));
    if (!mayTake) return;
    route.reserved = true;
    device_.holders[route.terminal].insert(session_.get());
    device_.tokens[route.terminal] = route.token;
  }

  void releaseOne(void (*release)(telmar_ra_Session*, std::uint32_t), bool destroys) {
    if (routes_.empty()) return;
    const auto place = routes_.begin() + static_cast<std::ptrdiff_t>(pick(routes_.size()));
    release(session_.get(), place->ticket);
    const std::string terminal = place->terminal;
    const bool wasReserved = std::exchange(place->reserved, false);
    if (destroys) routes_.erase(place);
    if (!wasReserved || !conflictOn(terminal).empty()) return;
    device_.holders[terminal].erase(session_.get());
    if (device_.holders[terminal].empty()) device_.tokens[terminal].clear();
  }

  tDevice& device_;
  std::mt19937 random_;
  tRoutingSession session_;
  std::vector<tRoute> routes_;
};

using tRoutingModel = tModel;

TEST_F(tRoutingModel, clientsLiveByTheRulesOfOwnership) {
  describe("", kRoutingDescription);
  tDevice devices[] = {{"5.0.0:1 coordinator"}, {"7.0.0:1 coordinator"}};
  std::vector<std::unique_ptr<tClient>> clients;
  for (unsigned n = 0; n < 6; ++n) clients.push_back(std::make_unique<tClient>(devices[n % 2], n));
  std::mt19937 random(1);
  for (int step = 0; step < 12'000 && !HasFailure(); ++step) clients[random() % 6]->step();
}

using tConcurrencyOfRouting = tModel;

// One session that several threads use, and others on its device.
TEST_F(tConcurrencyOfRouting, threadsShareASession) {
  machine_.writePxieSys(kRoutingDescription);
  const varmex::RoutingSession shared("5.0.0:1 shared"), other("5.0.0:1 shared");
  runInThreads(4, [&](int number) {
    for (int round = 0; round < 500; ++round) {
      const std::string name = "PXI_Trig" + std::to_string(round % 8);
      const auto routes = (number == 3 ? other : shared)
                              .calculateRoutes({{name, std::to_string(number % 2)}}, {name});
      try {
        for (const varmex::Route& route : routes) route.reserve();
      } catch (const varmex::Error& error) {
        EXPECT_EQ(error.code(), telmar_ra_errorResourcesInUse);
      }
    }
  });
  EXPECT_EQ(other.calculateRoutes({{"PXI_Trig3", "fresh"}}, {"PXI_Trig3"}).size(), 1U)
      << "all is given back";
}

}  // namespace

}  // namespace test
