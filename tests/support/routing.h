#ifndef TESTS_SUPPORT_ROUTING_H
#define TESTS_SUPPORT_ROUTING_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "tests/support/status.h"
#include "varmex/telmar_ra_varmex.h"

namespace test {

struct tRoutingCloser {
  void operator()(telmar_ra_Session* session) const { telmar_ra_varmex_destroySession(session); }
  void operator()(telmar_ra_TerminalIterator* iterator) const {
    telmar_ra_varmex_TerminalIterator_destroy(iterator);
  }
};
using tRoutingSession = std::unique_ptr<telmar_ra_Session, tRoutingCloser>;
using tIterator = std::unique_ptr<telmar_ra_TerminalIterator, tRoutingCloser>;

// A reply in a buffer from realloc.
struct tText {
  tText() = default;
  ~tText() { std::free(text); }
  tText(const tText&) = delete;
  tText& operator=(const tText&) = delete;
  char* text = nullptr;
};

// Modules 5.0.0 and 7.0.0 on all trigger lines, and 6.0.0, which controls the stars.
inline constexpr const char* kRoutingDescription =
    "[System]\nChassisList=1\n"
    "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=2,3,4\nTriggerBusList=1\n"
    "StarTriggerList=1\nStarSystemTimingSetList=1\n"
    "[Chassis1TriggerBus1]\nSlotList=2,3,4\n"
    "[Chassis1StarTrigger1]\nPXI_STAR0=2\nPXI_STAR1=4\nSystemTimingSlot=3\n"
    "[Chassis1StarSystemTimingSets1]\nStarSystemTimingSet0=2\nStarSystemTimingSet1=4\n"
    "SystemTimingSlot=3\n"
    "[Chassis1Slot2]\nSlotType=PXIePeripheralSlot\nAddressInfo=PXI0::5-0.0::INSTR\n"
    "[Chassis1Slot3]\nSlotType=PXIeSystemTimingSlot\nAddressInfo=PXI0::6-0.0::INSTR\n"
    "[Chassis1Slot4]\nSlotType=PXIePeripheralSlot\nAddressInfo=PXI0::7-0.0::INSTR\n";

// What a reservation fails with whose terminal is held under another token.
inline constexpr const char* kInUse = "-89137 telmar::errors::kErrorResourcesInUseForRoute {}";

// A session whose replies come from realloc.
inline tRoutingSession openRouting(const std::string& device, tStatusRecord* status) {
  return tRoutingSession(telmar_ra_varmex_createSession(device.c_str(), std::realloc, status));
}

// The reply of a calculation, "<null>" without one.
inline std::string calculate(const tRoutingSession& session, const std::string& seeds,
                             const std::string& destinations, tStatusRecord* status) {
  tText reply;
  EXPECT_EQ(telmar_ra_varmex_calculateRoute(session.get(), seeds.c_str(), destinations.c_str(),
                                            nullptr, &reply.text, status),
            0);
  return reply.text ? reply.text : "<null>";
}

inline std::string repeated(const std::string& entry, std::size_t count) {
  std::string list = "[";
  for (std::size_t n = 0; n < count; ++n) list += entry + ',';
  list.back() = ']';
  return list;
}

// A seed list of one.
inline std::string seed(const std::string& terminal, const std::string& token = "") {
  return R"([{"terminal":")" + terminal + R"(","cost":0,"constraints":{})" +
         (token.empty() ? "" : R"(,"srcDeviceToken":")" + token + '"') + "}]";
}

// The reply to one seed for a terminal that is the destination, too.
inline std::string route(const tRoutingSession& session, const std::string& terminal,
                         const std::string& token, tStatusRecord* status) {
  return calculate(session, seed(terminal, token), "[\"" + terminal + "\"]", status);
}

}  // namespace test

#endif
