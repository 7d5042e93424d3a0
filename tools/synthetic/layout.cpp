#include "tools/synthetic/layout.h"

namespace synthetic {

namespace {

constexpr std::uint32_t kMostSlotsOfBus = 8;

template <class Predicate>
tNumbers slotsWhere(std::uint32_t slots, Predicate predicate) {
  tNumbers found;
  for (std::uint32_t slot = 1; slot <= slots; ++slot) {
    if (predicate(slot)) found.push_back(slot);
  }
  return found;
}

}  // namespace

std::uint32_t tLayout::buses() const { return (slots + kMostSlotsOfBus - 1) / kMostSlotsOfBus; }

std::uint32_t tLayout::bridges() const { return 2 * (buses() - 1); }

tNumbers tLayout::slotsOfBus(std::uint32_t bus) const {
  return slotsWhere(slots,
                    [&](std::uint32_t slot) { return 1 + (slot - 1) * buses() / slots == bus; });
}

std::uint32_t tLayout::controller() const { return isExpress() ? slots / 2 + 1 : 2; }

tSlotKind tLayout::slotKind(std::uint32_t slot) const {
  if (slot == 1) return tSlotKind::system;
  if (!isExpress()) return tSlotKind::pxi1;
  if (slot == controller()) return tSlotKind::timing;
  if (slot == slots && buses() > 1) return tSlotKind::pxi1;
  return slot % 4 == 2 ? tSlotKind::hybrid : tSlotKind::peripheral;
}

tModule tLayout::moduleWithoutLimit(std::uint32_t slot) const {
  const tSlotKind kindOfSlot = slotKind(slot);
  if (kindOfSlot == tSlotKind::system) return isExpress() ? tModule::express : tModule::none;
  if (kindOfSlot == tSlotKind::timing) return tModule::express;
  if (slot % 8 == 7) return tModule::none;
  if (kindOfSlot == tSlotKind::pxi1) {
    return slot % 4 == 2 ? tModule::classicBridge : tModule::classic;
  }
  if (kindOfSlot == tSlotKind::hybrid && slot % 8 == 6) return tModule::classic;
  const bool hasRoom = slots >= 8;  // the timing slot is then not slot 3 or 4
  if (hasRoom && slot == 3) return tModule::wideExpress;
  if (hasRoom && slot == 4) return tModule::covered;
  return tModule::express;
}

tModule tLayout::module(std::uint32_t slot) const {
  const tModule found = moduleWithoutLimit(slot);
  const std::uint32_t anchor = found == tModule::covered ? slot - 1 : slot;
  const auto upToHere = slotsWhere(anchor, [this](std::uint32_t other) {
    const tModule module = moduleWithoutLimit(other);
    return module != tModule::none && module != tModule::covered;
  });
  return upToHere.size() > modules ? tModule::none : found;
}

bool tLayout::takesClassic(std::uint32_t slot) const {
  const tSlotKind kindOfSlot = slotKind(slot);
  return !isExpress() || kindOfSlot == tSlotKind::hybrid || kindOfSlot == tSlotKind::pxi1;
}

tNumbers tLayout::classicSlots() const {
  return slotsWhere(slots, [this](std::uint32_t slot) { return takesClassic(slot); });
}

}  // namespace synthetic
