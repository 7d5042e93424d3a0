// Takes the input as device name, seeds and destinations, parted at bytes 1. What routes come of it
// are reserved and destroyed.

#include <cstdlib>
#include <fstream>

#include "fuzz/support.h"
#include "tests/support/routing.h"

namespace {

void describeMachine() {
  std::ofstream(fuzz::makeRoot() + "/etc/pxi/pxiesys.ini") << test::kRoutingDescription;
}

std::string takePart(std::string& input) {
  const std::size_t end = input.find('\1');
  const std::string part = input.substr(0, end);
  input.erase(0, end == std::string::npos ? input.size() : end + 1);
  return part;
}

void walkRoutes(telmar_ra_Session* session, const std::string& seeds,
                const std::string& destinations) {
  tStatusRecord status = varmex_makeStatus();
  test::tText reply;
  test::tText conflicts;
  telmar_ra_varmex_calculateRoute(session, seeds.c_str(), destinations.c_str(), nullptr,
                                  &reply.text, &status);
  fuzz::require(status.code < 0 || reply.text[0] == '[');
  varmex_releaseStatus(&status);
  for (std::uint32_t ticket = 1; ticket < 4; ++ticket) {
    telmar_ra_varmex_reserveRoute(session, ticket, &conflicts.text, &status);
    varmex_releaseStatus(&status);
    telmar_ra_varmex_destroyRoute(session, ticket);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool ready = (describeMachine(), true);
  fuzz::require(ready);
  std::string input(reinterpret_cast<const char*>(data), size);
  const std::string name = takePart(input).substr(0, 12);
  const std::string seeds = takePart(input);
  tStatusRecord status = varmex_makeStatus();
  const test::tRoutingSession known(
      telmar_ra_varmex_createSession("5.0.0:7", std::realloc, &status));
  fuzz::require(known != nullptr);
  walkRoutes(known.get(), seeds, input);
  // Devices stay for the life of the process, so only few inputs may make one.
  if (size % 16 == 0) {
    test::tRoutingSession(telmar_ra_varmex_createSession(name.c_str(), std::realloc, &status));
  }
  varmex_releaseStatus(&status);
  return 0;
}
