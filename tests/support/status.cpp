#include "tests/support/status.h"

#include <nlohmann/json.hpp>

namespace test {

testing::AssertionResult holdsFailure(tStatus& status, std::int32_t code,
                                      const std::string& constant, const std::string& detail) {
  using nlohmann::ordered_json;
  const std::string text = status.text();
  const std::int32_t actual = status.code();
  varmex_releaseStatus(status);
  ordered_json json = ordered_json::parse(text, nullptr, false);
  if (actual != code) return testing::AssertionFailure() << "code " << actual << ", text " << text;
  if (!json.is_object()) return testing::AssertionFailure() << "no JSON object: " << text;
  const char* const head[] = {"error_constant", "file", "line", "component"};
  ordered_json expected;
  for (const char* key : head) {
    if (!json.contains(key)) return testing::AssertionFailure() << "no " << key << ": " << text;
    expected[key] = json[key];
  }
  expected["error_constant"] = constant;
  expected["component"] = "varmex";
  const bool headTyped = json["file"].is_string() && json["line"].is_number_unsigned();
  const ordered_json details = ordered_json::parse(detail);
  for (const auto& [key, value] : details.items()) expected[key] = value;
  if (headTyped && json.dump() == expected.dump()) return testing::AssertionSuccess();
  return testing::AssertionFailure() << text << "\nexpected " << expected.dump();
}

testing::AssertionResult holdsWrapped(tStatus& status, std::int32_t code,
                                      const std::string& constant, const std::string& message) {
  const nlohmann::ordered_json detail = {{"varmex_debug", {{"wrappedMessage", message}}}};
  return holdsFailure(status, code, constant, detail.dump());
}

bool isWellFormed(const std::string& json) { return nlohmann::json::accept(json); }

}  // namespace test
