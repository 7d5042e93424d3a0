// The registry where it is a text: whether the library reads it, and whether its names can be those
// of the description.

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tools/varmex/check/registryText.h"
#include "tools/varmex/check/rules.h"
#include "tools/varmex/text/utf8.h"

namespace tool {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kFirstLine = "Windows Registry Editor Version 5.00";

// The first line of a text of one byte or, in UTF-16LE, two bytes a character.
std::string firstLine(std::string_view bytes, std::size_t width) {
  std::string line;
  for (std::size_t n = 0; n < bytes.size() && bytes[n] != '\n'; n += width) line += bytes[n];
  while (!line.empty() && " \t\r"sv.find(line.back()) != std::string_view::npos) line.pop_back();
  line.erase(0, line.find_first_not_of(" \t\r"));
  return line;
}

// Why the library reads nothing out of a registry text; empty where it reads it.
std::string reasonNotRead(std::string_view bytes, bool& isUnicode) {
  const bool isUtf16 = bytes.starts_with("\xFF\xFE"sv);
  isUnicode = isUtf16 || isUtf8(bytes);
  if (bytes.starts_with("\xFE\xFF"sv)) return "the text is in UTF-16 with the high byte first";
  if (isUtf16) bytes.remove_prefix(2);
  if (bytes.starts_with("\xEF\xBB\xBF"sv)) bytes.remove_prefix(3);
  const std::string line = firstLine(bytes, isUtf16 ? 2 : 1);
  if (line == kFirstLine) return {};
  if (!isUtf16 && bytes.size() > 1 && (bytes[0] == '\0' || bytes[1] == '\0')) {
    return "the text is in UTF-16 without its mark";
  }
  if (line == "REGEDIT4") return "the text is an export of version 4";
  return "the first line is not \"" + std::string(kFirstLine) + '"';
}

// The library compares the bytes of names.
void checkIdentifiers(tRules& rules, const tPlan& plan) {
  constexpr const char* kItem = "TriggerManager";
  for (const auto& [number, chassis] : plan.chassis) {
    if (rules.disagree(chassis.section, kItem)) continue;
    for (const tCheckedFile* file : {&rules.classic, &rules.express}) {
      const auto identifier = file->text(chassis.section, kItem);
      if (!identifier || isUtf8(*identifier)) continue;
      rules.findings.addRefused(
          "code-page-identifier", file->at(chassis.section, kItem),
          "the name is in the bytes of a code page, and the registry text is in Unicode",
          aboutChassis(number, "ChassisTriggerManagerLibrary"), noTriggerManagerLibrary());
    }
  }
}

}  // namespace

void checkRegistry(tRules& rules, const tPlan& plan) {
  const std::filesystem::path path = registryTextPath();
  if (path.empty() || !std::filesystem::exists(path)) return;
  bool isUnicode = true;
  std::string reason;
  std::uint32_t line = 0;
  if (!std::filesystem::is_regular_file(path)) {
    reason = "it is no regular file";
  } else if (std::ifstream file(path, std::ios::binary); !file) {
    reason = "there is no right to read it";
  } else {
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    reason = reasonNotRead(bytes, isUnicode);
    line = 1;
  }
  if (!reason.empty()) {
    rules.findings.add(tSeverity::wrong, "registry-not-read", {"registry.reg", line, "", ""},
                       reason,
                       "as without a registry: no trigger manager has a library, and no relative "
                       "description file is found");
  } else if (isUnicode) {
    checkIdentifiers(rules, plan);
  }
}

}  // namespace tool
