#include "tests/support/status.h"

#include <map>
#include <nlohmann/json.hpp>

#include "tests/support/texts.h"

namespace test {

using nlohmann::ordered_json;

std::string failure(std::int32_t code, const std::string& constant, const std::string& detail) {
  return std::to_string(code) + ' ' + constant + ' ' + ordered_json::parse(detail).dump();
}

std::string refusal(const std::string& words) {
  static const std::map<std::string, std::int32_t> codes = {
      {"varmex_errorUnknownItem", -380751},
      {"varmex_errorInvalidHandle", -380752},
      {"varmex_errorInformationConflict", -380753},
      {"varmex_errorFeatureUnsupported", -380754},
      {"varmex_errorInvalidParameter", -380755},
      {"varmex_errorAttributeNotApplicable", -380756},
      {"varmex_errorInformationNotAvailable", -380757},
      {"varmex_errorStarController", -380758},
      {"varmex_errorNotConnected", -380759},
      {"varmex_errorIterationFailure", -380760},
      {"varmex_errorTriggerManagerLibraryNotFound", -380761},
      {"varmex_softwareFault", -380765}};
  const auto [word, detail] = cut(words, " ");
  const std::string constant = (word == "softwareFault" ? "varmex_" : "varmex_error") + word;
  const std::int32_t code = codes.at(constant);
  if (detail.empty()) return failure(code, constant);
  if (detail[0] == '+') return failure(code, constant, detail.substr(1));
  const std::string debug = detail[0] == '"' ? R"({"wrappedMessage":)" + detail + '}' : detail;
  return failure(code, constant, R"({"varmex_debug":)" + debug + '}');
}

std::string takeFailure(tStatus& status) {
  const std::string text = status.text();
  const std::int32_t code = status.code();
  varmex_releaseStatus(status);
  if (code == 0 && text == "{}") return "";
  ordered_json json = ordered_json::parse(text, nullptr, false);
  if (!json.is_object()) return std::to_string(code) + ' ' + text;
  const std::string constant = json.value("error_constant", "");
  const ordered_json head = {{"error_constant", constant},
                             {"file", json.value("file", "")},
                             {"line", json.value("line", 0U)},
                             {"component", "varmex"}};
  // Without it the text is told as it is.
  if (!json.dump().starts_with(head.dump().substr(0, head.dump().size() - 1))) {
    return std::to_string(code) + ' ' + text;
  }
  for (const auto& [key, value] : head.items()) json.erase(key);
  return failure(code, constant, json.dump());
}

bool isWellFormed(const std::string& json) { return nlohmann::json::accept(json); }

}  // namespace test
