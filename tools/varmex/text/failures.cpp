#include "tools/varmex/text/failures.h"

#include <iostream>

namespace tool {

namespace {

void tellStatus(const char* severity, const varmex::Error& error) {
  std::cerr << "varmex: " << severity << ' ' << error.code() << " ("
            << (error.constant().empty() ? "unnamed" : error.constant()) << ")\n";
  if (!error.detail().empty()) std::cerr << "  " << error.detail() << '\n';
}

}  // namespace

void tellFailure(const std::exception& failure) {
  if (const auto* const error = dynamic_cast<const varmex::Error*>(&failure)) {
    tellStatus("error", *error);
  } else {
    std::cerr << "varmex: " << failure.what() << '\n';
  }
}

void tellWarning(const varmex::Error& warning) { tellStatus("warning", warning); }

}  // namespace tool
