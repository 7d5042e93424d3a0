#include "tools/varmex/client.h"

namespace tool {

bool meansNothing(std::int32_t code) {
  switch (code) {
    case varmex_errorAttributeNotApplicable:
    case varmex_errorInformationNotAvailable:
    case varmex_errorStarController:
    case varmex_errorTriggerManagerLibraryNotFound:
    case varmex_errorNotConnected: return true;
    default: return false;
  }
}

std::uint32_t tItem::kind() const {
  tCall call;
  const std::uint32_t kind = varmex_getU32Attribute(get(), varmex_u32_ItemType, call);
  call.check();
  return kind;
}

std::optional<std::uint32_t> tItem::number(std::uint32_t attribute) const {
  tCall call;
  const std::uint32_t value = varmex_getU32Attribute(get(), attribute, call);
  if (meansNothing(call.code())) return std::nullopt;
  call.check();
  return value;
}

std::optional<std::string> tItem::text(std::uint32_t attribute) const {
  tCall call;
  const char* const value = varmex_getStringAttribute(get(), attribute, call);
  if (meansNothing(call.code())) return std::nullopt;
  call.check();
  return value;
}

std::vector<tItem> tItem::items(std::uint32_t container) const {
  struct tDestroyer {
    void operator()(varmex_ItemContainer* list) const { varmex_destroyItemContainer(list); }
  };
  tCall call;
  const std::unique_ptr<varmex_ItemContainer, tDestroyer> list(
      varmex_getItemContainer(get(), container, call));
  const varmex_ItemIterator end = varmex_ItemIterator_end(list.get(), call);
  std::vector<tItem> items;
  for (varmex_ItemIterator position = 0; position < end;) {
    items.emplace_back(varmex_ItemIterator_nextItem(list.get(), &position, call));
    call.check();
  }
  call.check();
  return items;
}

tItem openSession() {
  tCall call;
  tItem session(varmex_openPXISession(0, call));
  call.check();
  return session;
}

tItem openSynchronizedSession(std::optional<tError>& warning) {
  constexpr std::uint32_t kSynchronize = 1;
  tCall call;
  tItem session(varmex_openPXISession(kSynchronize, call));
  call.check();
  if (call.code() != 0) warning.emplace(call.code(), call.text());
  return session;
}

tItem openChassis(const tItem& session, std::uint32_t number) {
  tCall call;
  tItem chassis(varmex_openChassisByNumber(session.get(), number, call));
  call.check();
  return chassis;
}

tItem openSlot(const tItem& chassis, std::uint32_t number) {
  tCall call;
  tItem slot(varmex_openSlotByNumber(chassis.get(), number, call));
  call.check();
  return slot;
}

}  // namespace tool
