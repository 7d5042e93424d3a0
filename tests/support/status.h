#ifndef TESTS_SUPPORT_STATUS_H
#define TESTS_SUPPORT_STATUS_H

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "varmex/status.h"

namespace test {

// A status record as a caller holds one.
class tStatus {
 public:
  tStatus() : record_(varmex_makeStatus()) {}
  ~tStatus() { varmex_releaseStatus(&record_); }
  tStatus(const tStatus&) = delete;
  tStatus& operator=(const tStatus&) = delete;

  operator tStatusRecord*() { return &record_; }
  tStatusRecord& operator*() { return record_; }
  tStatusRecord& record() { return record_; }
  std::int32_t code() const { return record_.code; }
  std::string text() const { return varmex_statusText(&record_); }

 private:
  tStatusRecord record_;
};

// Whether a record holds this failure, with the keys of its text in their order. `detail` is what
// follows the four head keys, as the text of a JSON object. The record is then fresh again.
inline testing::AssertionResult holdsFailure(tStatus& status, std::int32_t code,
                                             const std::string& constant,
                                             const std::string& detail = "{}") {
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

// The same for a failure that wraps an exception's message.
inline testing::AssertionResult holdsWrapped(tStatus& status, std::int32_t code,
                                             const std::string& constant,
                                             const std::string& message) {
  const nlohmann::ordered_json detail = {{"varmex_debug", {{"wrappedMessage", message}}}};
  return holdsFailure(status, code, constant, detail.dump());
}

}  // namespace test

#endif
