#include "tools/varmex/check/refusals.h"

#include <map>

#include "tools/varmex/describe/json.h"
#include "tools/varmex/text/failures.h"

namespace tool {

namespace {

tRefusedAnswer refusal(const char* constant, std::int32_t code, const tDetails& details) {
  std::string words = std::string(constant) + " (" + std::to_string(code) + ')';
  const char* separator = ": ";
  for (const auto& [key, value] : details) {
    words.append(separator).append(key).append(": ").append(value);
    separator = ", ";
  }
  return {words, constant, code, details};
}

std::string jsonOf(const tDetails& details) {
  const tJson json(std::map<std::string, std::string>(details.begin(), details.end()));
  return json.dump(-1, ' ', false, tJson::error_handler_t::replace);
}

}  // namespace

std::string tRefusedAnswer::told() const {
  if (code == 0) return failureText(constant, code, kLine8Sentence);
  const std::string text = json.empty() ? jsonOf(details) : json;
  return failureText(constant, code, sentenceFor(varmex::Error(code, text.c_str())));
}

tRefusedAnswer notAvailable(const tDetails& details) {
  return refusal("varmex_errorInformationNotAvailable", varmex_errorInformationNotAvailable,
                 details);
}

tRefusedAnswer conflict(const tDetails& details) {
  return refusal("varmex_errorInformationConflict", varmex_errorInformationConflict, details);
}

tRefusedAnswer unknownItem(const tDetails& details) {
  return refusal("varmex_errorUnknownItem", varmex_errorUnknownItem, details);
}

tRefusedAnswer softwareFault(const tDetails& details) {
  return refusal("varmex_softwareFault", varmex_softwareFault, details);
}

tRefusedAnswer noTriggerManagerLibrary() {
  return refusal("varmex_errorTriggerManagerLibraryNotFound",
                 varmex_errorTriggerManagerLibraryNotFound,
                 {{"attribute", std::to_string(varmex_str_ChassisTriggerManagerLibrary)}});
}

tRefusedAnswer outOfRange() {
  return {"the exception std::out_of_range: invalid bitset<N> position", "std::out_of_range", 0};
}

tRefusedAnswer answerOf(const varmex::Error& error) {
  return {error.what(), error.constant(), error.code(), {}, error.json()};
}

tRefusedAnswer itemNotFound(const std::string& section, const std::string& item) {
  return readerRefusal("Section " + section + " item: " + item + " not found");
}

tRefusedAnswer readerRefusal(const std::string& message) {
  return notAvailable({{"wrappedMessage", message}});
}

}  // namespace tool
