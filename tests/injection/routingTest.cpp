// The routing functions with every allocation failing in turn.

#include <nlohmann/json.hpp>

#include "tests/injection/allocation.h"
#include "tests/support/model.h"
#include "tests/support/routing.h"

namespace test {

namespace {

int deviceCount = 0;

class tRoutingInjection : public tModel {
 protected:
  void SetUp() override {
    describe("", kRoutingDescription);
    session_.reset();
    session_.reset(varmex_openPXISession(0, status_));
  }
  std::string newDevice() { return "5.0.0:7 " + std::to_string(deviceCount++); }

  // `call` with the n-th allocation failing, for each n until none fails: nothing but success and
  // the family's own memory failure (the query family's while a device is read) may come of it.
  template <class Call>
  void inject(const char* name, Call call) {
    for (long n = 1;; ++n) {
      tStatus status;
      failAllocation(n);
      call(status);
      const bool failed = allocationFailed();
      const std::int32_t code = status.code();
      EXPECT_TRUE(code == 0 ||
                  (failed && (code == ostrelerr_memoryFull || code == varmex_errorMemoryFull)))
          << name << ", allocation " << n << ": " << code << ' ' << status.text();
      EXPECT_TRUE(isWellFormed(status.text())) << status.text();
      if (!failed || HasFailure()) return;
    }
  }
};

TEST_F(tRoutingInjection, opening) {
  inject("create", [this](tStatus& status) {
    const std::string name = newDevice();
    tRoutingSession(telmar_ra_varmex_createSession(name.c_str(), std::realloc, status));
  });
  const std::string known = newDevice();
  const tRoutingSession session(
      telmar_ra_varmex_createSession(known.c_str(), std::realloc, status_));
  inject("create again", [&](tStatus& status) {
    tRoutingSession(telmar_ra_varmex_createSession(known.c_str(), std::realloc, status));
  });
  inject("terminals", [&](tStatus& status) {
    tIterator(telmar_ra_varmex_getAllTerminals(session.get(), status));
  });
}

TEST_F(tRoutingInjection, routes) {
  const tRoutingSession session(
      telmar_ra_varmex_createSession(newDevice().c_str(), std::realloc, status_));
  const std::string seeds = seed("PXI_Trig5", "a token that no string object holds in place");
  const char* const destinations =
      "[\"PXI_Trig5\",\"PXI_Trig5\",\"PXI_Trig5\",\"PXI_Trig5\",\"PXI_Trig5\",\"PXI_Trig5\"]";
  tText reply;
  inject("calculate", [&](tStatus& status) {
    telmar_ra_varmex_calculateRoute(session.get(), seeds.c_str(), destinations, nullptr,
                                    &reply.text, status);
  });
  const std::uint32_t ticket = nlohmann::json::parse(reply.text)[0]["ticket"];
  inject("reserve", [&](tStatus& status) {
    telmar_ra_varmex_reserveRoute(session.get(), ticket, nullptr, status);
  });
  inject("join", [&](tStatus& status) {
    telmar_ra_varmex_reserveRoute(session.get(), ticket + 1, nullptr, status);
  });
  inject("path", [&](tStatus& status) {
    telmar_ra_varmex_getRouteTerminalPath(session.get(), ticket, &reply.text, status);
  });
  inject("constraints", [&](tStatus& status) {
    telmar_ra_varmex_getHandledConstraints(session.get(), &reply.text, status);
  });
  telmar_ra_varmex_destroyRoute(session.get(), ticket);
  telmar_ra_varmex_destroyRoute(session.get(), ticket + 1);
  telmar_ra_varmex_calculateRoute(session.get(), seed("PXI_Trig5", "b").c_str(), destinations,
                                  nullptr, &reply.text, status_);
  EXPECT_NE(std::string(reply.text), "[]") << "nothing is held by a call that failed";
}

}  // namespace

}  // namespace test
