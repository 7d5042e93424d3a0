// Takes the input as both description files, parted at the first byte 1, opens a session and walks
// everything that opens, reading every attribute number of every class and some that no class has.

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "fuzz/support.h"
#include "varmex/varmex.h"

namespace {

// Lists that repeat numbers multiply the walk; inputs that may do so are passed over.
constexpr std::size_t kMostNumbers = 40;

bool isBounded(const std::string& text) {
  return std::count(text.begin(), text.end(), ',') <= static_cast<std::ptrdiff_t>(kMostNumbers);
}

template <class Call>
void call(Call work) {
  tStatusRecord status = varmex_makeStatus();
  try {
    work(&status);
  } catch (const std::out_of_range&) {
    // A bridge's destination line 8.
  }
  varmex_releaseStatus(&status);
}

void readAttributes(varmex_Item* item) {
  for (const std::uint32_t base : {0U, 4096U, 8192U, 12288U, 16384U, 0xFFFFF000U}) {
    for (std::uint32_t attribute = base; attribute < base + 20; ++attribute) {
      call([&](tStatusRecord* status) { varmex_getU32Attribute(item, attribute, status); });
      call([&](tStatusRecord* status) { varmex_getStringAttribute(item, attribute, status); });
    }
  }
  for (std::uint32_t kind = 0; kind < 6; ++kind) {
    call([&](tStatusRecord* status) {
      varmex_close(varmex_openContainingItem(item, kind, status));
    });
  }
}

void walk(varmex_Item* parent, std::uint32_t container) {
  call([&](tStatusRecord* status) {
    varmex_ItemContainer* const list = varmex_getItemContainer(parent, container, status);
    varmex_ItemIterator position = 0;
    while (varmex_Item* item = varmex_ItemIterator_nextItem(list, &position, status)) {
      readAttributes(item);
      varmex_close(item);
    }
    varmex_destroyItemContainer(list);
  });
}

void write(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string root = fuzz::makeRoot();
  const std::string input(reinterpret_cast<const char*>(data), size);
  if (!isBounded(input)) return -1;
  const std::size_t parting = input.find('\1');
  write(root + "/etc/pxi/pxisys.ini", input.substr(0, parting));
  write(root + "/etc/pxi/pxiesys.ini",
        parting == std::string::npos ? std::string() : input.substr(parting + 1));
  call([&](tStatusRecord* status) {
    varmex_Item* const session = varmex_openPXISession(0, status);
    if (!session) return;
    readAttributes(session);
    for (const std::uint32_t container : {0U, 4096U, 4097U, 8192U}) walk(session, container);
    for (std::uint32_t number = 0; number < 4; ++number) {
      call([&](tStatusRecord* own) {
        varmex_Item* const chassis = varmex_openChassisByNumber(session, number, own);
        varmex_Item* const slot = varmex_openSlotByNumber(chassis, 2, own);
        if (slot) readAttributes(slot);
        varmex_close(slot);
        varmex_close(chassis);
      });
    }
    varmex_close(session);
  });
  return 0;
}
