// Memory: the peak of each reader during a load, the allocations of our look-ups, and what open
// sessions keep.
//
// Counted are the blocks of operator new as the allocator rounds them. The C library's own blocks
// (the FILE of an open file) and GLib's, which do not come from there, are not counted.

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <vector>

#include "bench/keys.h"
#include "bench/machine.h"
#include "bench/peers.h"
#include "corpxiTools/iniFile.h"
#include "varmex/varmex.h"

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

// One measurement, as the report reads it.
void print(const char* what, const char* file, std::uint32_t count, const char* who,
           std::size_t value) {
  std::printf("%s/%s/%u/%s %zu\n", what, file, count, who, value);
}

// GLib's blocks are not seen.
bool isCounted(const bench::tReader& reader) { return std::string_view(reader.name) != "GLib"; }

void printPeaks(std::uint32_t chassis, const std::string& path) {
  for (const bench::tReader& reader : bench::readers()) {
    if (!isCounted(reader)) continue;
    const std::size_t before = live;
    startCount();
    const auto store = reader.load(path.c_str());
    print("peak", "pxiesys", chassis, reader.name, peak - before);
  }
}

void printLookUps(std::uint32_t chassis, const std::string& path) {
  varmex::tIniFile file;
  file.read(path);
  const auto keys = bench::shuffledKeys(path);
  startCount();
  for (const bench::tKey& key : keys) file.findValueText(file.findSection(key.section), key.item);
  print("allocations", "lookUp", chassis, "varmex", allocations);
}

// What sessions keep that are open at once.
void printSessions(const bench::tMachine& machine) {
  machine.use();
  std::vector<varmex_Item*> sessions;
  const std::size_t before = live;
  for (std::uint32_t count = 1; count <= 100; ++count) {
    sessions.push_back(varmex_openPXISession(0, nullptr));
    if (!sessions.back()) std::abort();
    if (count == 1 || count == 100) print("sessions", "both", count, "varmex", live - before);
  }
  for (varmex_Item* session : sessions) varmex_close(session);
}

}  // namespace

int main() {
  for (const std::uint32_t chassis : bench::kSizes) {
    const bench::tMachine& machine = bench::machineOf(chassis);
    const std::size_t size = bench::readText(machine.pxieSysPath()).size();
    print("size", "pxiesys", chassis, "file", size);
    print("size", "both", chassis, "file", size + bench::readText(machine.pxiSysPath()).size());
    printPeaks(chassis, machine.pxieSysPath());
    printLookUps(chassis, machine.pxieSysPath());
  }
  printSessions(bench::machineOf(bench::kSizes.back()));
}
