// The model on an open session: attributes, containers, devices by address, and threads.

#include <SimpleIni.h>
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <utility>

#include "bench/benchmarks.h"
#include "bench/machine.h"
#include "bench/timing.h"
#include "varmex/varmex.h"

namespace bench {

namespace {

struct tCloser {
  void operator()(varmex_Item* item) const { varmex_close(item); }
};
using tItem = std::shared_ptr<varmex_Item>;

void require(const tStatusRecord& status) {
  if (status.code < 0) throw std::runtime_error(varmex_statusText(&status));
}

tItem openSession(std::uint32_t chassis) {
  machineOf(chassis).use();
  tStatusRecord status = varmex_makeStatus();
  tItem session(varmex_openPXISession(0, &status), tCloser());
  require(status);
  return session;
}

bool answers(varmex_Item* item, std::uint32_t attribute, bool isText) {
  tStatusRecord status = varmex_makeStatus();
  if (isText) {
    varmex_getStringAttribute(item, attribute, &status);
  } else {
    varmex_getU32Attribute(item, attribute, &status);
  }
  const bool found = status.code == 0;
  varmex_releaseStatus(&status);
  return found;
}

// The last item of a kind that answers an attribute: far from the start of its file.
tItem lastThatAnswers(const tItem& session, std::uint32_t container, std::uint32_t attribute,
                      bool isText) {
  tStatusRecord status = varmex_makeStatus();
  varmex_ItemContainer* const list = varmex_getItemContainer(session.get(), container, &status);
  require(status);
  tItem last;
  varmex_ItemIterator position = 0;
  while (position != varmex_ItemIterator_end(list, &status)) {
    const tItem item(varmex_ItemIterator_nextItem(list, &position, &status), tCloser());
    if (answers(item.get(), attribute, isText)) last = item;
  }
  varmex_destroyItemContainer(list);
  if (!last) throw std::runtime_error("no item answers");
  return last;
}

std::string slotSection(const tItem& item) {
  tStatusRecord status = varmex_makeStatus();
  const auto number = [&](std::uint32_t attribute) {
    return std::to_string(varmex_getU32Attribute(item.get(), attribute, &status));
  };
  return "Chassis" + number(varmex_u32_ChassisNumber) + "Slot" + number(varmex_u32_SlotNumber);
}

void timeText(benchmark::State& state, const tItem& item, std::uint32_t attribute) {
  tStatusRecord status = varmex_makeStatus();
  for (auto _ : state) {
    benchmark::DoNotOptimize(varmex_getStringAttribute(item.get(), attribute, &status));
  }
}

void timeNumber(benchmark::State& state, const tItem& item, std::uint32_t attribute) {
  tStatusRecord status = varmex_makeStatus();
  for (auto _ : state) {
    benchmark::DoNotOptimize(varmex_getU32Attribute(item.get(), attribute, &status));
  }
}

template <class Function>
void add(const std::string& name, Function function) {
  benchmark::RegisterBenchmark(name.c_str(), function);
}

void addPeer(const std::string& name, const std::shared_ptr<CSimpleIniCaseA>& file,
             const std::string& section, const char* item) {
  add(name + "/SimpleIni", [file, section, item](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(file->GetValue(section.c_str(), item));
  });
}

void registerAttributes(std::uint32_t chassis) {
  const tItem session = openSession(chassis);
  const auto file = std::make_shared<CSimpleIniCaseA>();
  file->LoadFile(machineOf(chassis).pxieSysPath().c_str());
  const std::string size = '/' + std::to_string(chassis);
  // The items hold on to the session through the lambdas.
  const tItem slot =
      lastThatAnswers(session, varmex_container_Slots, varmex_u32_PeripheralSlotLinkWidth1, false);
  add("attribute/slotText" + size + "/varmex",
      [session, slot](benchmark::State& state) { timeText(state, slot, varmex_str_LocalBusLeft); });
  addPeer("attribute/slotText" + size, file, slotSection(slot), "LocalBusLeft");
  add("attribute/triggerRecord" + size + "/varmex", [session, slot](benchmark::State& state) {
    timeText(state, slot, varmex_str_TriggerBusStableName);
  });
  addPeer("attribute/triggerRecord" + size, file, slotSection(slot), "SlotType");
  const tItem device = lastThatAnswers(session, varmex_container_Devices,
                                       varmex_u32_PeripheralModuleLinkWidthMax, false);
  add("attribute/deviceNumber" + size + "/varmex", [session, device](benchmark::State& state) {
    timeNumber(state, device, varmex_u32_PeripheralModuleLinkWidthMax);
  });
  addPeer("attribute/deviceNumber" + size, file, slotSection(device),
          "PeripheralModuleLinkWidthMax");
}

void timeContainer(benchmark::State& state, const tItem& session, std::uint32_t kind) {
  tStatusRecord status = varmex_makeStatus();
  tTimedPart part(state);
  for (auto _ : state) {
    part.run([&] {
      varmex_ItemContainer* const list = varmex_getItemContainer(session.get(), kind, &status);
      part.countItems(varmex_ItemIterator_end(list, &status));
      varmex_destroyItemContainer(list);
    });
  }
}

void timeByAddress(benchmark::State& state, const tItem& session, const tItem& device) {
  tStatusRecord status = varmex_makeStatus();
  tDeviceAddress address{};
  address.bus = varmex_getU32Attribute(device.get(), varmex_u32_DeviceBus, &status);
  address.device = varmex_getU32Attribute(device.get(), varmex_u32_DeviceNumber, &status);
  require(status);
  for (auto _ : state) varmex_close(varmex_openDeviceByAddr(session.get(), &address, &status));
}

// What one thread asks in a round: attributes of a slot and of a device of its own.
void timeThread(benchmark::State& state, tTogether& together, const std::vector<tItem>& sessions) {
  const auto thread = static_cast<std::size_t>(state.thread_index());
  const tItem& session = sessions[thread % sessions.size()];
  const tItem slot =
      lastThatAnswers(session, varmex_container_Slots, varmex_u32_PeripheralSlotLinkWidth1, false);
  const tItem device = lastThatAnswers(session, varmex_container_Devices,
                                       varmex_u32_PeripheralModuleLinkWidthMax, false);
  tStatusRecord status = varmex_makeStatus();
  constexpr int kItems = 200;
  together.run(state, kItems, [&] {
    benchmark::DoNotOptimize(
        varmex_getStringAttribute(slot.get(), varmex_str_LocalBusLeft, &status));
    benchmark::DoNotOptimize(
        varmex_getStringAttribute(slot.get(), varmex_str_TriggerBusStableName, &status));
    benchmark::DoNotOptimize(
        varmex_getU32Attribute(device.get(), varmex_u32_PeripheralModuleLinkWidthMax, &status));
  });
}

void registerThreads() {
  const tItem one = openSession(16);
  const tItem other = openSession(16);
  const auto add = [](const char* what, const std::vector<tItem>& sessions) {
    const auto together = std::make_shared<tTogether>();
    for (const int threads : {1, 2}) {
      benchmark::RegisterBenchmark(
          (std::string("threads/") + what + '/' + std::to_string(threads) + "/varmex").c_str(),
          [=](benchmark::State& state) { timeThread(state, *together, sessions); })
          ->Threads(threads)
          ->MinTime(threads == 1 ? 0.02 : 0.5)
          ->UseRealTime();
    }
  };
  add("oneSession", {one});
  add("twoSessions", {one, other});
}

}  // namespace

void registerModel() {
  for (const std::uint32_t chassis : {1U, 255U}) registerAttributes(chassis);
  for (const std::uint32_t chassis : kSizes) {
    const tItem session = openSession(chassis);
    const std::string who = '/' + std::to_string(chassis) + "/varmex";
    for (const auto& [name, kind] : {std::pair("slots", varmex_container_Slots),
                                     std::pair("devices", varmex_container_Devices)}) {
      benchmark::RegisterBenchmark(
          (std::string("container/") + name + who).c_str(),
          [session, kind = kind](benchmark::State& state) { timeContainer(state, session, kind); })
          ->UseManualTime()
          ->MinTime(0.05);  // a long list seldom comes through undisturbed
    }
    const tItem device =
        lastThatAnswers(session, varmex_container_Devices, varmex_u32_DeviceNumber, false);
    add("byAddress/-" + who,
        [session, device](benchmark::State& state) { timeByAddress(state, session, device); });
  }
  registerThreads();
}

}  // namespace bench
