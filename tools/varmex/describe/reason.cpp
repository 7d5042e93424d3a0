#include "tools/varmex/describe/reason.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tools/varmex/describe/absence.h"
#include "tools/varmex/text/shownPaths.h"

namespace tool {

namespace {

bool tellsAbsence(std::int32_t code, std::string_view text, std::string_view attribute) {
  if (!varmex::meansNothing(code)) return false;
  if (code != varmex_errorInformationNotAvailable) return true;
  const auto* const row =
      std::find_if(std::begin(kAbsenceRows), std::end(kAbsenceRows),
                   [text](const tAbsenceRow& each) { return text.find(each.text) != text.npos; });
  return row->isAbsence != (attribute == row->otherwise);
}

}  // namespace

tReason reasonOf(const varmex::Error& error, const tAsked& asked) {
  tToldFailure told = toldFailure(error, asked);
  return {error.code(), error.constant(), withShownPaths(error.detail()), std::move(told.sentence),
          std::move(told.remedy)};
}

tReason reasonOf(const std::exception& exception, const tAsked& asked) {
  if (const auto* const error = dynamic_cast<const varmex::Error*>(&exception)) {
    return reasonOf(*error, asked);
  }
  // The one exception of another kind that answers end with.
  if (dynamic_cast<const std::out_of_range*>(&exception)) {
    tToldFailure told = toldLine8(asked);
    return {0, "std::out_of_range", exception.what(), std::move(told.sentence),
            std::move(told.remedy)};
  }
  const bool isNone = dynamic_cast<const tNoDescription*>(&exception) != nullptr;
  return {0, kNoConstant, exception.what(), exception.what(),
          isNone ? tNoDescription::remedy() : ""};
}

tAsked askedOf(const varmex::ItemBase& item, std::uint32_t attribute) {
  const auto number = [&](std::uint32_t which) {
    varmex::Status status;
    const std::uint32_t value = varmex_getU32Attribute(item.handle(), which, status);
    return status.code() < 0 ? std::nullopt : std::optional(value);
  };
  return {number(varmex_u32_ChassisNumber), number(varmex_u32_SlotNumber),
          number(varmex_u32_BridgeNumber), lineOf(attribute)};
}

std::optional<std::uint32_t> lineOf(std::uint32_t attribute) {
  constexpr std::uint32_t kFirst = varmex_u32_BridgeLineMapping0;
  const bool isLine = attribute >= kFirst && attribute <= varmex_u32_BridgeLineMapping7;
  return isLine ? std::optional(attribute - kFirst) : std::nullopt;
}

tJson jsonOf(const tReason& reason) {
  return {{"code", reason.code},
          {"constant", reason.constant},
          {"detail", reason.detail},
          {"sentence", reason.sentence}};
}

bool isAbsence(varmex::Status& status, const tAttribute& attribute) {
  return tellsAbsence(status.code(), varmex_statusText(status), attribute.name);
}

bool isAbsence(const varmex::Error& error, std::string_view attribute) {
  return tellsAbsence(error.code(), error.json(), attribute);
}

}  // namespace tool
