// Memory: the peak of each reader during a load, and the allocations of our look-ups.
//
// Counted are the blocks of operator new as the allocator rounds them. The C library's own blocks
// (the FILE of an open file) and GLib's, which do not come from there, are not counted.

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <new>

#include "bench/keys.h"
#include "bench/machine.h"
#include "bench/peers.h"
#include "corpxiTools/iniFile.h"

namespace {

std::size_t live = 0;
std::size_t peak = 0;
std::size_t allocations = 0;

void startCount() {
  peak = live;
  allocations = 0;
}

}  // namespace

void* operator new(std::size_t size) {
  void* const block = std::malloc(size);
  if (!block) throw std::bad_alloc();
  ++allocations;
  live += malloc_usable_size(block);
  if (live > peak) peak = live;
  return block;
}

void operator delete(void* block) noexcept {
  live -= malloc_usable_size(block);
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace {

// GLib's blocks are not seen.
bool isCounted(const bench::tReader& reader) { return std::string_view(reader.name) != "GLib"; }

void printPeaks(const std::string& path) {
  const auto size = static_cast<double>(bench::readText(path).size());
  for (const bench::tReader& reader : bench::readers()) {
    if (!isCounted(reader)) continue;
    const std::size_t before = live;
    startCount();
    const auto store = reader.load(path.c_str());
    std::printf("  %-10s %6.2f\n", reader.name, static_cast<double>(peak - before) / size);
  }
}

void printLookUps(const std::string& path) {
  varmex::tIniFile file;
  file.read(path);
  const auto keys = bench::shuffledKeys(path);
  startCount();
  for (const bench::tKey& key : keys) file.getValueText(key.section, key.item);
  std::printf("allocations in %zu look-ups of ours: %zu\n", keys.size(), allocations);
}

}  // namespace

int main() {
  for (const std::uint32_t chassis : bench::kSizes) {
    const std::string path = bench::machineOf(chassis).pxieSysPath();
    std::printf(
        "\npxiesys.ini of %u chassis: peak memory of a load, times the file (ours: goal 3)\n",
        chassis);
    printPeaks(path);
    printLookUps(path);
  }
}
