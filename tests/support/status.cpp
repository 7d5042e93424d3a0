#include "tests/support/status.h"

#include <nlohmann/json.hpp>

namespace test {

using nlohmann::ordered_json;

std::string failure(std::int32_t code, const std::string& constant, const std::string& detail) {
  return std::to_string(code) + ' ' + constant + ' ' + ordered_json::parse(detail).dump();
}

std::string wrapped(std::int32_t code, const std::string& constant, const std::string& message) {
  const ordered_json detail = {{"varmex_debug", {{"wrappedMessage", message}}}};
  return failure(code, constant, detail.dump());
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
