#include "tools/varmex/check/checkedFile.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "corpxiTools/iniLine.h"

namespace tool {

namespace {

using varmex::tIniLineKind;

std::string readBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool isBlank(const varmex::tIniLine& line) {
  return std::string(line.begin, line.end).find_first_not_of(" \t\r\n\v\f") == std::string::npos;
}

const char* reasonOf(const varmex::tIniLine& line) {
  const std::string text(line.begin, line.end);
  if (text[text.find_first_not_of(" \t\v\f")] == '[') return "a section header without a name";
  if (!line.equals) return "neither a section header nor an item nor a comment";
  return "an item without a name or without a value";
}

}  // namespace

tCheckedFile::tCheckedFile(const char* name, std::string path)
    : name_(name), path_(std::move(path)), exists_(std::filesystem::exists(path_)) {
  if (!exists_) return;
  try {
    if (!ini_.read(path_)) throw std::runtime_error("can't read " + path_);
  } catch (const varmex::tIniException& error) {
    throw std::runtime_error("can't read " + path_ + ": " + error.what());
  }
}

std::optional<std::string> tCheckedFile::text(const std::string& section,
                                              const std::string& item) const {
  const char* const value = ini_.findValueText(section, item);
  return value ? std::optional<std::string>(value) : std::nullopt;
}

std::optional<std::int64_t> tCheckedFile::number(const std::string& section,
                                                 const std::string& item) const try {
  return ini_.getNumber(section, item);
} catch (const varmex::tIniException&) {
  return std::nullopt;
}

std::optional<tNumbers> tCheckedFile::list(const std::string& section,
                                           const std::string& item) const try {
  return ini_.getNumberList(section, item);
} catch (const varmex::tIniException&) {
  return std::nullopt;
}

tPosition tCheckedFile::at(const std::string& section, const std::string& item) const {
  const varmex::tIniSection* const foundSection = ini_.store().findSection(section);
  const varmex::tIniItem* const foundItem = ini_.store().findItem(section, item);
  const std::uint32_t line = foundItem ? foundItem->line : foundSection ? foundSection->line : 0;
  return {name_, line, section, item};
}

std::vector<std::string> tCheckedFile::sections() const {
  std::vector<std::string> names;
  for (const varmex::tIniSection& section : ini_.store().sections()) {
    names.emplace_back(section.nameView());
  }
  return names;
}

void tCheckedFile::checkLines(tFindings& findings) const {
  if (exists_) checkContent(readBytes(path_), findings);
}

void tCheckedFile::checkContent(const std::string& text, tFindings& findings) const {
  std::string bytes = text + std::string(varmex::tIniLineReader::kPadding, '\0');
  const std::size_t mark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  varmex::tIniLineReader reader(bytes.data() + mark, bytes.data() + text.size());
  std::set<std::string> sections;
  std::set<std::pair<std::string, std::string>> items;
  std::string section;
  for (varmex::tIniLine line; reader.next(line) && !findings.isFull();) {
    const varmex::tIniLineContent content = varmex::parseIniLine(line);
    const auto name = [&] { return std::string(content.name, content.nameEnd); };
    tPosition position{name_, reader.lineNumber(), section, ""};
    if (content.kind == tIniLineKind::unreadable && !isBlank(line)) {
      findings.add(tSeverity::wrong, "line-passed-over", position, reasonOf(line),
                   [] { return "as without the line"; });
    } else if (content.kind == tIniLineKind::header) {
      position.section = section = name();
      if (!sections.insert(section).second) {
        findings.add(tSeverity::doubtful, "repeated-section", position,
                     "the section has begun before",
                     [] { return "what either place holds, as the reader merges them or not"; });
      }
    } else if (content.kind == tIniLineKind::item && sections.empty()) {
      position.item = name();
      findings.add(tSeverity::wrong, "item-without-section", position,
                   "an item ahead of the first section", [] { return "as without the line"; });
    } else if (content.kind == tIniLineKind::item && !items.emplace(section, name()).second) {
      position.item = name();
      findings.add(tSeverity::doubtful, "repeated-item", position,
                   "the section has the item already",
                   [&] { return "\"" + this->text(section, name()).value_or("") + '"'; });
    }
  }
}

}  // namespace tool
