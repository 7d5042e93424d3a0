#include "tools/varmex/check/refusals.h"

#include "varmex/varmex.h"

namespace tool {

namespace {

std::string refusal(const char* constant, std::int32_t code, tDetails details) {
  std::string text = std::string(constant) + " (" + std::to_string(code) + ')';
  const char* separator = ": ";
  for (const auto& [key, value] : details) {
    text.append(separator).append(key).append(": ").append(value);
    separator = ", ";
  }
  return text;
}

}  // namespace

std::string notAvailable(tDetails details) {
  return refusal("varmex_errorInformationNotAvailable", varmex_errorInformationNotAvailable,
                 details);
}

std::string conflict(tDetails details) {
  return refusal("varmex_errorInformationConflict", varmex_errorInformationConflict, details);
}

std::string unknownItem(tDetails details) {
  return refusal("varmex_errorUnknownItem", varmex_errorUnknownItem, details);
}

std::string softwareFault(tDetails details) {
  return refusal("varmex_softwareFault", varmex_softwareFault, details);
}

std::string noTriggerManagerLibrary() {
  return refusal("varmex_errorTriggerManagerLibraryNotFound",
                 varmex_errorTriggerManagerLibraryNotFound,
                 {{"attribute", std::to_string(varmex_str_ChassisTriggerManagerLibrary)}});
}

std::string outOfRange() { return "the exception std::out_of_range: invalid bitset<N> position"; }

std::string itemNotFound(const std::string& section, const std::string& item) {
  return readerRefusal("Section " + section + " item: " + item + " not found");
}

std::string readerRefusal(const std::string& message) {
  return notAvailable({{"wrappedMessage", message}});
}

}  // namespace tool
