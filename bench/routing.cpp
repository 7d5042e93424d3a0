// The routing adaptor, against JSON libraries that do the reading and writing alone.

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "bench/benchmarks.h"
#include "bench/machine.h"
#include "bench/timing.h"
#include "varmex/telmar_ra_varmex.h"
#include "varmex/varmex.h"

namespace bench {

namespace {

using tSession = std::shared_ptr<telmar_ra_Session>;

void require(const tStatusRecord& status) {
  if (status.code < 0) throw std::runtime_error(varmex_statusText(&status));
}

// The device name of the n-th device of the installation, with its trigger bus.
std::string deviceName(std::uint64_t number) {
  machineOf(1).use();
  tStatusRecord status = varmex_makeStatus();
  varmex_Item* const session = varmex_openPXISession(0, &status);
  varmex_ItemContainer* const list =
      varmex_getItemContainer(session, varmex_container_Devices, &status);
  varmex_ItemIterator position = number;
  varmex_Item* const device = varmex_ItemIterator_nextItem(list, &position, &status);
  const auto text = [&](std::uint32_t attribute) {
    return std::to_string(varmex_getU32Attribute(device, attribute, &status));
  };
  const std::string name = text(varmex_u32_DeviceBus) + '.' + text(varmex_u32_DeviceNumber) + '.' +
                           text(varmex_u32_DeviceFunction) + ":1";
  require(status);
  varmex_close(device);
  varmex_destroyItemContainer(list);
  varmex_close(session);
  return name;
}

tSession openSession(std::uint64_t device) {
  tStatusRecord status = varmex_makeStatus();
  const std::string name = deviceName(device);
  tSession session(telmar_ra_varmex_createSession(name.c_str(), std::realloc, &status),
                   telmar_ra_varmex_destroySession);
  require(status);
  return session;
}

struct tTexts {
  std::string seeds = "[";
  std::string destinations = "[";
};

tTexts makeTexts(int count) {
  tTexts texts;
  for (int n = 0; n < count; ++n) {
    const std::string name = "\"PXI_Trig" + std::to_string(n % 8) + '"';
    const std::string comma = n ? "," : "";
    texts.seeds += comma + "{\"terminal\":" + name + ",\"cost\":" + std::to_string(n) +
                   ",\"constraints\":{},\"srcDeviceToken\":\"Dev1/ai/StartTrigger\"}";
    texts.destinations += comma + name;
  }
  texts.seeds += "]";
  texts.destinations += "]";
  return texts;
}

// How many calculations are timed at once: few routes are calculated in a hundred nanoseconds.
int timesAtOnce(int count) { return std::max(1, 64 / count); }

// Only the calculation is timed; its routes are taken away in between. Tickets go round.
void timeOurs(benchmark::State& state, const tTexts& texts, int count) {
  const tSession session = openSession(0);
  char* reply = nullptr;
  std::uint32_t ticket = 1;
  tStatusRecord status = varmex_makeStatus();
  const int times = timesAtOnce(count);
  tTimedPart part(state, times);
  for (auto _ : state) {
    part.run([&] {
      telmar_ra_varmex_calculateRoute(session.get(), texts.seeds.c_str(),
                                      texts.destinations.c_str(), nullptr, &reply, &status);
    });
    for (int route = 0; route < times * count; ++route) {
      telmar_ra_varmex_destroyRoute(session.get(), ticket);
      ticket = ticket % 1024 + 1;
    }
  }
  require(status);
  std::free(reply);
}

template <class Work>
void timePeer(benchmark::State& state, int count, Work work) {
  tTimedPart part(state, timesAtOnce(count));
  for (auto _ : state) part.run(work);
}

void timeNlohmann(benchmark::State& state, const tTexts& texts, int count) {
  timePeer(state, count, [&] {
    const auto seeds = nlohmann::json::parse(texts.seeds);
    const auto destinations = nlohmann::json::parse(texts.destinations);
    nlohmann::ordered_json reply = nlohmann::ordered_json::array();
    unsigned ticket = 0;
    for (const auto& destination : destinations) {
      reply.push_back({{"ticket", ++ticket},
                       {"destination", destination},
                       {"cost", 0},
                       {"indexOfStartingSeed", ticket % seeds.size()},
                       {"constraints", nlohmann::ordered_json::object()}});
    }
    benchmark::DoNotOptimize(reply.dump());
  });
}

void timeRapidJson(benchmark::State& state, const tTexts& texts, int count) {
  timePeer(state, count, [&] {
    rapidjson::Document seeds;
    rapidjson::Document destinations;
    seeds.Parse(texts.seeds.c_str());
    destinations.Parse(texts.destinations.c_str());
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartArray();
    unsigned ticket = 0;
    for (const auto& destination : destinations.GetArray()) {
      writer.StartObject();
      writer.Key("ticket");
      writer.Uint(++ticket);
      writer.Key("destination");
      writer.String(destination.GetString(), destination.GetStringLength());
      writer.Key("cost");
      writer.Uint(0);
      writer.Key("indexOfStartingSeed");
      writer.Uint(ticket % seeds.Size());
      writer.Key("constraints");
      writer.StartObject();
      writer.EndObject();
      writer.EndObject();
    }
    writer.EndArray();
    benchmark::DoNotOptimize(buffer.GetString());
  });
}

// A text in a buffer with the padding that simdjson wants behind it and that callers do not give.
class tPaddedText {
 public:
  simdjson::padded_string_view copy(const std::string& text) {
    buffer_.assign(text);
    buffer_.reserve(text.size() + simdjson::SIMDJSON_PADDING);
    return simdjson::padded_string_view(buffer_);
  }

 private:
  std::string buffer_;
};

// Reads alone: what a program takes from either text, with parsers and buffers at hand.
void timeSimdJson(benchmark::State& state, const tTexts& texts, int count) {
  simdjson::ondemand::parser parsers[2];
  tPaddedText buffers[2];
  timePeer(state, count, [&] {
    auto seeds = parsers[0].iterate(buffers[0].copy(texts.seeds));
    for (simdjson::ondemand::object seed : seeds.get_array()) {
      benchmark::DoNotOptimize(seed["terminal"].get_string().value());
      benchmark::DoNotOptimize(seed["cost"].get_uint64().value());
      benchmark::DoNotOptimize(seed["constraints"].get_object().value());
      benchmark::DoNotOptimize(seed["srcDeviceToken"].get_string().value());
    }
    auto destinations = parsers[1].iterate(buffers[1].copy(texts.destinations));
    for (auto name : destinations.get_array()) {
      benchmark::DoNotOptimize(name.get_string().value());
    }
  });
}

struct tReader {
  const char* name;
  void (*time)(benchmark::State& state, const tTexts& texts, int count);
};

constexpr tReader kReaders[] = {{"varmex", timeOurs},
                                {"nlohmann", timeNlohmann},
                                {"RapidJSON", timeRapidJson},
                                {"simdjson", timeSimdJson}};

void registerCalculations() {
  for (const int count : {1, 8, 1024}) {
    const std::string prefix = "calculate/-/" + std::to_string(count) + '/';
    const tTexts texts = makeTexts(count);
    for (const tReader& reader : kReaders) {
      benchmark::RegisterBenchmark((prefix + reader.name).c_str(), [=](benchmark::State& state) {
        reader.time(state, texts, count);
      })->UseManualTime();
    }
  }
}

// The last of the live routes is reserved and given back.
void timeReserve(benchmark::State& state, int live) {
  const tSession session = openSession(1);
  tStatusRecord status = varmex_makeStatus();
  char* reply = nullptr;
  const tTexts texts = makeTexts(live);
  telmar_ra_varmex_calculateRoute(session.get(), texts.seeds.c_str(), texts.destinations.c_str(),
                                  nullptr, &reply, &status);
  std::free(reply);
  const auto ticket = static_cast<std::uint32_t>(live);
  for (auto _ : state) {
    telmar_ra_varmex_reserveRoute(session.get(), ticket, nullptr, &status);
    telmar_ra_varmex_unreserveRoute(session.get(), ticket);
  }
  require(status);
}

void timeThread(benchmark::State& state, tTogether& together) {
  const tSession session = openSession(state.thread_index() == 0 ? 2 : 3);
  const tTexts texts = makeTexts(8);
  tStatusRecord status = varmex_makeStatus();
  char* reply = nullptr;
  constexpr int kItems = 8;
  together.run(state, kItems, [&] {
    telmar_ra_varmex_calculateRoute(session.get(), texts.seeds.c_str(), texts.destinations.c_str(),
                                    nullptr, &reply, &status);
    for (std::uint32_t ticket = 1; ticket <= 1024; ++ticket) {
      telmar_ra_varmex_destroyRoute(session.get(), ticket);
    }
  });
  std::free(reply);
}

}  // namespace

void registerRouting() {
  registerCalculations();
  for (const int live : {1, 64, 1024}) {
    benchmark::RegisterBenchmark(("reserve/-/" + std::to_string(live) + "/varmex").c_str(),
                                 [live](benchmark::State& state) { timeReserve(state, live); });
  }
  const auto together = std::make_shared<tTogether>();
  for (const int threads : {1, 2}) {
    benchmark::RegisterBenchmark(
        ("threads/devices/" + std::to_string(threads) + "/varmex").c_str(),
        [together](benchmark::State& state) { timeThread(state, *together); })
        ->Threads(threads)
        ->MinTime(threads == 1 ? 0.02 : 0.5)
        ->UseRealTime();
  }
}

}  // namespace bench
