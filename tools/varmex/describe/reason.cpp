#include "tools/varmex/describe/reason.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tools/varmex/describe/absence.h"
#include "tools/varmex/text/failures.h"
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

tReason reasonOf(const varmex::Error& error) {
  tToldFailure told = toldFailure(error);
  return {error.code(), error.constant(), withShownPaths(error.detail()), std::move(told.sentence),
          std::move(told.remedy)};
}

tReason reasonOf(const std::exception& exception) {
  if (const auto* const error = dynamic_cast<const varmex::Error*>(&exception)) {
    return reasonOf(*error);
  }
  // The one exception of another kind that answers end with.
  if (dynamic_cast<const std::out_of_range*>(&exception)) {
    return {0, "std::out_of_range", exception.what(), kLine8Sentence, ""};
  }
  return {0, kNoConstant, exception.what(), exception.what(), ""};
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
