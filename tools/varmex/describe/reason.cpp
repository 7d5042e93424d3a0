#include "tools/varmex/describe/reason.h"

#include <string_view>

#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/shownPaths.h"

namespace tool {

tReason reasonOf(const varmex::Error& error) {
  return {error.code(), error.constant(), withShownPaths(error.detail()),
          withShownPaths(sentenceFor(error))};
}

tReason reasonOf(const std::exception& exception) {
  if (const auto* const error = dynamic_cast<const varmex::Error*>(&exception)) {
    return reasonOf(*error);
  }
  // The one exception of another kind that answers end with.
  if (dynamic_cast<const std::out_of_range*>(&exception)) {
    return {0, "std::out_of_range", exception.what(),
            "The line map names the destination line 8, and lines are 0 to 7."};
  }
  return {0, kNoConstant, exception.what(), exception.what()};
}

tJson jsonOf(const tReason& reason) {
  return {{"code", reason.code},
          {"constant", reason.constant},
          {"detail", reason.detail},
          {"sentence", reason.sentence}};
}

// The code for "not available" stands both for an item that is not there and for one that can't be
// read; the text tells them apart.
bool isAbsence(varmex::Status& status, const tAttribute& attribute) {
  if (!varmex::meansNothing(status.code())) return false;
  if (status.code() != varmex_errorInformationNotAvailable) return true;
  const std::string_view json = varmex_statusText(status);
  // A slot type that nobody knows is a fault of the type, once, not of all that depends on it.
  if (json.find("\"bad_slot_type\"") != std::string_view::npos) {
    return attribute.isText || attribute.number != varmex_u32_SlotType;
  }
  // A bridge names a line map that is not there.
  if (json.find("\"mappingSection_\"") != std::string_view::npos) return false;
  const bool isReaders = json.find("\"wrappedMessage\"") != std::string_view::npos;
  return !isReaders || json.find(" not found\"") != std::string_view::npos;
}

}  // namespace tool
