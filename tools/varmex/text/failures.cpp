#include "tools/varmex/text/failures.h"

#include <iostream>

namespace tool {

namespace {

void tellStatus(const char* severity, const varmex::Error& error) {
  std::cerr << "varmex: " << severity << ' ' << error.code() << " ("
            << (error.constant().empty() ? "unnamed" : error.constant()) << ")\n";
  if (!error.detail().empty()) std::cerr << "  " << error.detail() << '\n';
}

// What the library passes on from its reader of files is a sentence of its own.
std::string plainDetail(const std::string& detail) {
  const std::string mark = "wrappedMessage: ";
  return detail.starts_with(mark) ? detail.substr(mark.size()) : detail;
}

}  // namespace

void tellFailure(const std::exception& failure) {
  if (const auto* const error = dynamic_cast<const varmex::Error*>(&failure)) {
    tellStatus("error", *error);
  } else {
    std::cerr << "varmex: " << failure.what() << '\n';
  }
}

std::string failureText(const std::string& constant, std::int32_t code, const std::string& detail) {
  const std::string name = constant.empty() ? "unnamed" : constant;
  const std::string kind = code == 0 ? name : name + ' ' + std::to_string(code);
  return detail.empty() ? kind : plainDetail(detail) + " (" + kind + ')';
}

void tellWarning(const varmex::Error& warning) { tellStatus("warning", warning); }

}  // namespace tool
