#ifndef TESTS_INJECTION_SCENARIOS_H
#define TESTS_INJECTION_SCENARIOS_H

#include <functional>
#include <string>

#include "tests/injection/allocation.h"
#include "tests/support/model.h"
#include "tests/support/texts.h"

namespace test {

// Calls of the library in their order. It answers a line for each, "what=answer", or "what!code"
// for a failure that is that call's alone; a failure that ends the scenario stays in the status.
using tScenario = std::function<std::string(tStatus&)>;

// A call of the library, in which allocations may fail.
template <class Result, class... Parameters>
Result call(Result (*function)(Parameters...), std::type_identity_t<Parameters>... arguments) {
  const tCountedAllocations counted;
  return function(arguments...);
}

std::string openAll(std::uint32_t flags, tStatus& status);

// Containers of a session for each kind of item, copies of the items, and all that they answer.
inline constexpr std::uint32_t kKinds[] = {varmex_container_Chassis, varmex_container_Slots,
                                           varmex_container_Devices,
                                           varmex_container_TriggerBridges};
std::string walk(varmex_Item* session, std::uint32_t kind, tStatus& status);
std::string walkAll(tStatus& status);

// Library and nativeness of the trigger manager of chassis 1.
std::string askTriggerManager(tStatus& status);

// A device of its own each time, and all that can be done with a route on it.
std::string routeAll(tStatus& status);

// Takes turns with failures: what a call that fails may do to a scenario.
class tScenarios : public tModel {
 protected:
  // An installation that the scenarios are about.
  void SetUp() override;

  // Runs the scenario with its n-th call failing, for n from 1 on. Whatever it answers then must
  // suit `isGood`. When there are no more calls to fail it works as ever, but for what it
  // `expected`.
  using tJudge = std::function<bool(const std::string& answer, const std::string& undisturbed,
                                    const tStatus& status)>;
  void inject(const tScenario& scenario, const std::function<void(long)>& arm,
              const std::function<bool()>& disarm, const tJudge& isGood, std::int32_t expected = 0);
};

}  // namespace test

#endif
