// Attributes that do not apply, against throwing and catching an int across one frame.

#include <benchmark/benchmark.h>

#include <stdexcept>

#include "bench/benchmarks.h"
#include "bench/machine.h"
#include "varmex/varmex.h"

namespace bench {

namespace {

constexpr const char* kPxieSys =
    "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList="
    "2\nTriggerBusList=1\nStarTriggerList=1\n"
    "StarSystemTimingSetList=1\n[Chassis1TriggerBus1]\nSlotList=2\n"
    "[Chassis1StarTrigger1]\nPXI_STAR0=3\nSystemTimingSlot=4\n"
    "[Chassis1Slot2]\nSlotType=PXIePeripheralSlot\n";

struct tRefusal {
  const char* name;
  std::uint32_t attribute;  // of slot 2
  std::int32_t code;
};

constexpr tRefusal kRefusals[] = {
    {"notApplicable", varmex_u32_BridgeNumber, varmex_errorAttributeNotApplicable},
    {"wrongSlotType", varmex_u32_SystemSlotLinkCount, varmex_errorAttributeNotApplicable},
    {"notConnected", varmex_u32_StarTriggerLine, varmex_errorNotConnected},
    {"itemMissing", varmex_u32_PeripheralSlotLinkWidth1, varmex_errorInformationNotAvailable},
};

// The slot whose attributes are refused. Its session stays open until the program ends.
varmex_Item* slotThatRefuses() {
  static const tMachine machine({"", kPxieSys});
  machine.use();
  tStatusRecord status = varmex_makeStatus();
  varmex_Item* const session = varmex_openPXISession(0, &status);
  varmex_Item* const chassis = varmex_openChassisByNumber(session, 1, &status);
  varmex_Item* const slot = varmex_openSlotByNumber(chassis, 2, &status);
  if (status.code < 0) throw std::runtime_error(varmex_statusText(&status));
  varmex_close(chassis);
  return slot;
}

void requireRefused(varmex_Item* slot, const tRefusal& refusal) {
  tStatusRecord status = varmex_makeStatus();
  varmex_getU32Attribute(slot, refusal.attribute, &status);
  if (status.code != refusal.code) throw std::runtime_error(refusal.name);
  varmex_releaseStatus(&status);
}

[[gnu::noinline]] void throwNumber(int number) {
  if (number != 0) throw number;
}

void timeThrow(benchmark::State& state) {
  int caught = 1;
  for (auto _ : state) {
    try {
      benchmark::DoNotOptimize(caught);
      throwNumber(caught);
    } catch (int number) {
      benchmark::DoNotOptimize(number);
    }
  }
}

void add(const tRefusal& refusal, varmex_Item* slot) {
  requireRefused(slot, refusal);
  const std::string prefix = std::string("refusal/") + refusal.name + "/1/";
  const std::uint32_t attribute = refusal.attribute;
  benchmark::RegisterBenchmark((prefix + "record").c_str(), [=](benchmark::State& state) {
    tStatusRecord status = varmex_makeStatus();
    for (auto _ : state) {
      varmex_getU32Attribute(slot, attribute, &status);
      varmex_releaseStatus(&status);
    }
  });
  benchmark::RegisterBenchmark((prefix + "null").c_str(), [=](benchmark::State& state) {
    for (auto _ : state) varmex_getU32Attribute(slot, attribute, nullptr);
  });
}

}  // namespace

void registerRefusals() {
  varmex_Item* const slot = slotThatRefuses();
  for (const tRefusal& refusal : kRefusals) add(refusal, slot);
  benchmark::RegisterBenchmark("refusal/throw/1/int", timeThrow);
}

}  // namespace bench
