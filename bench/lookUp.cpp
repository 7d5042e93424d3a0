// Looking up existing items whose key texts are ready, in a shuffled order.

#include <SimpleIni.h>
#include <benchmark/benchmark.h>

#include <memory>
#include <string_view>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/keys.h"
#include "bench/machine.h"
#include "corpxiTools/iniFile.h"

namespace bench {

namespace {

struct tDescription {
  varmex::tIniFile ours;
  CSimpleIniCaseA simpleIni;
  std::vector<tKey> keys;
};

using tShared = std::shared_ptr<const tDescription>;

tShared loadDescription(const std::string& path) {
  auto description = std::make_shared<tDescription>();
  description->ours.read(path);
  description->simpleIni.LoadFile(path.c_str());
  description->keys = shuffledKeys(path);
  return description;
}

// One look-up a round, the keys in turn.
template <class LookUp>
void timeLookUps(benchmark::State& state, const std::vector<tKey>& keys, LookUp lookUp) {
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(lookUp(keys[next]));
    if (++next == keys.size()) next = 0;
  }
}

void timeOurs(benchmark::State& state, const tShared& description) {
  timeLookUps(state, description->keys, [&](const tKey& key) {
    const varmex::tIniFile& file = description->ours;
    return file.findValueText(file.findSection(key.section), key.item);
  });
}

void timeSimpleIni(benchmark::State& state, const tShared& description) {
  timeLookUps(state, description->keys, [&](const tKey& key) {
    return description->simpleIni.GetValue(key.section.c_str(), key.item.c_str());
  });
}

}  // namespace

void registerLookUps() {
  for (const std::uint32_t chassis : kSizes) {
    const std::string prefix = "lookUp/pxiesys/" + std::to_string(chassis) + "/";
    const tShared description = loadDescription(machineOf(chassis).pxieSysPath());
    benchmark::RegisterBenchmark((prefix + "varmex").c_str(), timeOurs, description);
    benchmark::RegisterBenchmark((prefix + "SimpleIni").c_str(), timeSimpleIni, description);
  }
}

}  // namespace bench
