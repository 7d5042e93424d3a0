// Everything that a session answers: each attribute of each item through the C interface, refusals
// included, beside the build that VARMEX_BENCH_BEFORE names.

#include "bench/walk.h"

#include <benchmark/benchmark.h>

#include <stdexcept>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/machine.h"

namespace bench {

namespace {

// Attributes from the first to the last.
struct tRange {
  std::uint32_t first, last;
};

// The attributes of a kind of item.
struct tAttributes {
  std::vector<tRange> numbers, texts;
};

constexpr tRange kItemType{varmex_u32_ItemType, varmex_u32_ItemType};
constexpr tRange kChassisNumber{varmex_u32_ChassisNumber, varmex_u32_ChassisNumber};

const tAttributes kSession{{kItemType, {varmex_u32_SessionIsCurrent, varmex_u32_SessionIsCurrent}},
                           {{varmex_str_PxiSysPath, varmex_str_Version}}};
const tAttributes kChassis{
    {kItemType, {varmex_u32_ChassisNumber, varmex_u32_IsTriggerManagerNative}},
    {{varmex_str_ChassisVendor, varmex_str_ChassisTriggerBusList}}};
const tAttributes kSlot{
    {kItemType, kChassisNumber, {varmex_u32_SlotType, varmex_u32_OccupyingModuleSlot}},
    {{varmex_str_PCISlotPath, varmex_str_LocalBusRight}}};
const tAttributes kDevice{{kItemType,
                           kChassisNumber,
                           {varmex_u32_SlotNumber, varmex_u32_SlotNumber},
                           {varmex_u32_DeviceBus, varmex_u32_DeviceIsExpress}},
                          {{varmex_str_DeviceVendor, varmex_str_DeviceModel},
                           {varmex_str_DeviceInstanceName, varmex_str_DeviceName}}};
const tAttributes kBridge{
    {kItemType, kChassisNumber, {varmex_u32_BridgeNumber, varmex_u32_BridgeLineMapping7}}, {}};

template <class Ask>
void askOnce(Ask ask) {
  tStatusRecord status = varmex_makeStatus();
  benchmark::DoNotOptimize(ask(&status));
  varmex_releaseStatus(&status);
}

void askAll(const tLibrary& library, varmex_Item* item, const tAttributes& attributes) {
  for (const tRange& range : attributes.numbers) {
    for (auto number = range.first; number <= range.last; ++number) {
      askOnce([&](tStatusRecord* status) { return library.number(item, number, status); });
    }
  }
  for (const tRange& range : attributes.texts) {
    for (auto text = range.first; text <= range.last; ++text) {
      askOnce([&](tStatusRecord* status) { return library.text(item, text, status); });
    }
  }
}

template <class Visit>
void forEach(const tLibrary& library, varmex_Item* owner, std::uint32_t kind, Visit visit) {
  tStatusRecord status = varmex_makeStatus();
  varmex_ItemContainer* const list = library.list(owner, kind, &status);
  const varmex_ItemIterator end = library.end(list, &status);
  for (varmex_ItemIterator position = 0; position < end;) {
    varmex_Item* const item = library.next(list, &position, &status);
    visit(item);
    library.close(item);
  }
  library.destroyList(list);
  if (status.code < 0) throw std::runtime_error(varmex_statusText(&status));
}

void timeWalk(benchmark::State& state, const tLibrary& library, std::uint32_t chassis) {
  aloneMachineOf(chassis).use();
  varmex_Item* const session = library.openSession(0, nullptr);
  if (!session) throw std::runtime_error("can't open a session");
  for (auto _ : state) walk(library, session);
  library.close(session);
}

}  // namespace

void walk(const tLibrary& library, varmex_Item* session) {
  askAll(library, session, kSession);
  forEach(library, session, varmex_container_Chassis, [&](varmex_Item* chassis) {
    askAll(library, chassis, kChassis);
    forEach(library, chassis, varmex_container_Slots, [&](varmex_Item* slot) {
      askAll(library, slot, kSlot);
      forEach(library, slot, varmex_container_Devices,
              [&](varmex_Item* device) { askAll(library, device, kDevice); });
    });
    forEach(library, chassis, varmex_container_TriggerBridges,
            [&](varmex_Item* bridge) { askAll(library, bridge, kBridge); });
  });
}

void registerWalks() {
  const auto add = [](const char* who, const tLibrary& library) {
    benchmark::RegisterBenchmark(
        (std::string("walk/all/255/") + who).c_str(),
        [&library](benchmark::State& state) { timeWalk(state, library, 255); });
  };
  add("varmex", libraryNow());
  if (libraryBefore()) add("before", *libraryBefore());
}

}  // namespace bench
