// The life of a routing coordinator: clients on two modules that calculate, reserve, join,
// conflict, release and die. Every answer is held against a small model of who holds what.

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <set>

#include "tests/support/model.h"
#include "tests/support/routing.h"
#include "tests/support/threads.h"

namespace test {

namespace {

// The rules of ownership for the terminals of one device. A holder is a session, known by its
// address alone: a new session in the place of a dead one holds what that held.
class tOwnership {
 public:
  bool mayTake(int terminal, const std::string& token) const {
    const auto held = tokens_.find(terminal);
    return held == tokens_.end() || held->second.empty() || held->second == token;
  }
  void take(int terminal, const std::string& token, const void* client) {
    holders_[terminal].insert(client);
    tokens_[terminal] = token;
  }
  void release(int terminal, const void* client) {
    holders_[terminal].erase(client);
    if (holders_[terminal].empty()) tokens_.erase(terminal);
  }

 private:
  std::map<int, std::string> tokens_;
  std::map<int, std::set<const void*>> holders_;
};

struct tDevice {
  std::string name;
  tOwnership ownership;
};

// One client: a session with its routes, and what it holds.
class tClient {
 public:
  tClient(tDevice& device, unsigned seed) : device_(device), random_(seed) { open(); }

  void step() {
    const int terminal = pick(8);
    const std::string token = std::string(1, static_cast<char>('a' + pick(3)));
    const int act = pick(8);
    if (act < 3) return calculateAndReserve(terminal, token);
    if (act < 5) return releaseOne(&telmar_ra_varmex_unreserveRoute, false);
    if (act < 7) return releaseOne(&telmar_ra_varmex_destroyRoute, true);
    if (pick(40) == 0) die();
  }

 private:
  struct tRoute {
    std::uint32_t ticket;
    int terminal;
    std::string token;
    bool reserved;
  };

  int pick(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }

  void open() {
    tStatus status;
    session_ = openRouting(device_.name, status);
    ASSERT_TRUE(session_) << status.text();
  }

  // A dead session's terminals stay held under their tokens.
  void die() {
    routes_.clear();
    open();
  }

  bool holds(int terminal, const std::string* token = nullptr) const {
    return std::any_of(routes_.begin(), routes_.end(), [&](const tRoute& route) {
      return route.reserved && route.terminal == terminal && (!token || route.token == *token);
    });
  }

  void calculateAndReserve(int terminal, const std::string& token) {
    tStatus status;
    const auto routes = nlohmann::json::parse(
        route(session_, "PXI_Trig" + std::to_string(terminal), token, status));
    ASSERT_EQ(status.code(), 0) << status.text();
    ASSERT_EQ(routes.size(), device_.ownership.mayTake(terminal, token) ? 1U : 0U);
    if (!routes.empty()) routes_.push_back({routes[0]["ticket"], terminal, token, false});
    if (routes_.empty()) return;
    reserve(routes_[static_cast<std::size_t>(pick(static_cast<int>(routes_.size())))]);
  }

  void reserve(tRoute& route) {
    tStatus status;
    tText conflicts;
    telmar_ra_varmex_reserveRoute(session_.get(), route.ticket, &conflicts.text, status);
    const bool mayTake = device_.ownership.mayTake(route.terminal, route.token);
    ASSERT_EQ(status.code(), mayTake ? 0 : telmar_ra_errorResourcesInUse) << status.text();
    ASSERT_EQ(conflicts.text != nullptr, !mayTake && holds(route.terminal));
    if (!mayTake) return;
    route.reserved = true;
    device_.ownership.take(route.terminal, route.token, session_.get());
  }

  void releaseOne(void (*release)(telmar_ra_Session*, std::uint32_t), bool destroys) {
    if (routes_.empty()) return;
    const auto place = routes_.begin() + pick(static_cast<int>(routes_.size()));
    release(session_.get(), place->ticket);
    const int terminal = place->terminal;
    const bool wasReserved = place->reserved;
    place->reserved = false;
    if (wasReserved && !holds(terminal)) device_.ownership.release(terminal, session_.get());
    if (destroys) routes_.erase(place);
  }

  tDevice& device_;
  std::mt19937 random_;
  tRoutingSession session_;
  std::vector<tRoute> routes_;
};

using tRoutingModel = tModel;

TEST_F(tRoutingModel, clientsLiveByTheRulesOfOwnership) {
  describe("", kRoutingDescription);
  tDevice devices[] = {{"5.0.0:1 coordinator", {}}, {"7.0.0:1 coordinator", {}}};
  std::vector<std::unique_ptr<tClient>> clients;
  for (unsigned n = 0; n < 6; ++n) clients.push_back(std::make_unique<tClient>(devices[n % 2], n));
  std::mt19937 random(1);
  for (int step = 0; step < 12'000 && !HasFailure(); ++step) clients[random() % 6]->step();
}

using tConcurrencyOfRouting = tModel;

// One session that several threads use, and others on its device.
TEST_F(tConcurrencyOfRouting, threadsShareASession) {
  describe("", kRoutingDescription);
  const tRoutingSession shared = openRouting("5.0.0:1 shared", status_);
  const tRoutingSession other = openRouting("5.0.0:1 shared", status_);
  runInThreads(4, [&](int number) {
    const tRoutingSession& session = number == 3 ? other : shared;
    for (int round = 0; round < 500; ++round) {
      tStatus status;
      const std::string name = "PXI_Trig" + std::to_string(round % 8);
      const auto routes =
          nlohmann::json::parse(route(session, name, std::to_string(number % 2), status));
      if (routes.empty()) continue;
      const std::uint32_t ticket = routes[0]["ticket"];
      telmar_ra_varmex_reserveRoute(session.get(), ticket, nullptr, status);
      telmar_ra_varmex_destroyRoute(session.get(), ticket);
      EXPECT_TRUE(status.code() == 0 || status.code() == telmar_ra_errorResourcesInUse);
    }
  });
  EXPECT_NE(route(other, "PXI_Trig3", "fresh", status_), "[]") << "all is given back";
}

}  // namespace

}  // namespace test
