#include "tools/varmex/check/checkedFile.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "corpxiTools/iniLine.h"

namespace tool {

namespace {

using varmex::tIniLineContent;
using varmex::tIniLineKind;
using namespace std::string_view_literals;

// Throws std::runtime_error where nobody may look.
bool looksThere(const std::string& path) {
  std::error_code error;
  const bool exists = std::filesystem::exists(path, error);
  if (!error) return exists;
  throw std::runtime_error("can't look at " + path + ": " + error.message() +
                           "; grant the right to enter its folders");
}

std::string readBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

tIniLineContent parse(std::string_view text) {
  auto* const begin = const_cast<char*>(text.data());  // which the parser does not write to
  char* const end = begin + text.size();
  char* const equals = std::find(begin, end, '=');
  return varmex::parseIniLine({begin, end, equals == end ? nullptr : equals});
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && varmex::isWhiteSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && varmex::isWhiteSpace(text.back())) text.remove_suffix(1);
  return text;
}

// The name of an item that has one and no value; else empty.
std::string_view valuelessName(std::string_view line) {
  line = trimmed(line);
  const bool isItem = line.ends_with('=') && line.find('=') + 1 == line.size();
  return isItem && !line.starts_with('[') ? trimmed(line.substr(0, line.size() - 1)) : ""sv;
}

// Whether an editor begins a line behind that byte.
bool endsLine(std::string_view text, std::size_t place) {
  if (text[place] == '\n') return true;
  return text[place] == '\r' && (place + 1 == text.size() || text[place + 1] != '\n');
}

// What the reader passes over, drops or merges, line by line.
class tLineCheck {
 public:
  tLineCheck(const tCheckedFile& file, tFindings& findings) : file_(file), findings_(findings) {}

  void take(std::string_view text, std::uint32_t number) {
    const tIniLineContent content = parse(text);
    position_ = {file_.name(), number, section_, ""};
    if (content.kind == tIniLineKind::unreadable) return takeUnreadable(trimmed(text));
    if (content.kind == tIniLineKind::comment) return;
    const std::string name(content.name, content.nameEnd);
    content.kind == tIniLineKind::header ? takeHeader(name) : takeItem(name);
  }

 private:
  void takeUnreadable(std::string_view text) {
    if (text.empty()) return;
    position_.item = valuelessName(text);
    if (text.starts_with('[')) {
      doubt("line-passed-over", "a section header without a name or without its ]",
            section_.empty() ? "as without the items below it"
                             : "as if the items below it stood in [" + section_ + ']');
    } else if (text.find('=') == std::string_view::npos) {
      doubt("line-passed-over", "neither a section header nor an item nor a comment", kWithoutLine);
    } else {
      doubt("line-passed-over", "an item without a name or without a value", kWithoutLine);
    }
  }

  void takeHeader(const std::string& name) {
    position_.section = section_ = name;
    if (sections_.insert(name).second) return;
    doubt("repeated-section", "the section has begun before",
          "what either place holds, as the reader merges them or not");
  }

  void takeItem(const std::string& name) {
    position_.item = name;
    if (sections_.empty()) {
      doubt("item-without-section", "an item ahead of the first section", kWithoutLine);
    } else if (!items_.emplace(section_, name).second) {
      doubt("repeated-item", "the section has the item already",
            '"' + file_.text(section_, name).value_or("") + '"');
    }
  }

  void doubt(const char* id, const char* message, const std::string& answer) {
    findings_.add(tSeverity::doubtful, id, position_, message, answer);
  }

  static constexpr const char* kWithoutLine = "as without the line";

  const tCheckedFile& file_;
  tFindings& findings_;
  tPosition position_;
  std::string section_;
  std::set<std::string> sections_;
  std::set<std::pair<std::string, std::string>> items_;
};

}  // namespace

tCheckedFile::tCheckedFile(const char* name, std::string path)
    : name_(name), path_(std::move(path)), exists_(looksThere(path_)) {
  if (exists_) load();
}

void tCheckedFile::load() {
  bool isRead = true;
  try {
    isRead = ini_.read(path_);
  } catch (const varmex::tIniException&) {
    // for its encoding
  }
  if (!isRead) {
    throw std::runtime_error("can't read " + path_ +
                             ": make it a regular file that you have the right to read");
  }
  bytes_ = readBytes(path_);
  encoding_ = wideEncodingOf(bytes_);
  if (encoding_) {
    bytes_ = narrowed(bytes_, *encoding_);
    ini_.load(varmex::tIniText(bytes_));
  }
  takeLines();
}

void tCheckedFile::takeLines() {
  const std::string original = bytes_;
  const std::size_t size = bytes_.size();
  bytes_.append(varmex::tIniLineReader::kPadding, '\0');
  const std::size_t mark = original.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  varmex::tIniLineReader reader(bytes_.data() + mark, bytes_.data() + size);
  std::size_t counted = 0;
  std::uint32_t number = 1;
  std::string section;
  for (varmex::tIniLine line; reader.next(line);) {
    const auto begin = static_cast<std::size_t>(line.begin - bytes_.data());
    for (; counted < begin; ++counted) number += endsLine(original, counted) ? 1 : 0;
    lines_.push_back({begin, static_cast<std::size_t>(line.end - bytes_.data()), number});
    const std::string_view text(line.begin, static_cast<std::size_t>(line.end - line.begin));
    const tIniLineContent content = varmex::parseIniLine(line);
    if (content.kind == tIniLineKind::header) section.assign(content.name, content.nameEnd);
    if (content.kind != tIniLineKind::unreadable) continue;
    const std::string name(valuelessName(text));
    if (!name.empty()) valueless_.emplace(std::pair(section, name), number);
  }
}

std::uint32_t tCheckedFile::editorLine(std::uint32_t readerLine) const {
  return readerLine - 1 < lines_.size() ? lines_[readerLine - 1].number : 1;
}

std::string_view tCheckedFile::lineText(std::uint32_t number) const {
  const auto found = std::lower_bound(
      lines_.begin(), lines_.end(), number,
      [](const tSourceLine& line, std::uint32_t wanted) { return line.number < wanted; });
  if (found == lines_.end() || found->number != number) return {};
  return std::string_view(bytes_).substr(found->begin, found->end - found->begin);
}

std::optional<std::string> tCheckedFile::text(const std::string& section,
                                              const std::string& item) const {
  const char* const value = ini_.findValueText(ini_.findSection(section), item);
  return value ? std::optional<std::string>(value) : std::nullopt;
}

template <class Value, class Read>
tReading<Value> tCheckedFile::readAs(const char* id, const char* complaint,
                                     const std::string& section, const std::string& item,
                                     Read read) const {
  tReading<Value> reading;
  const varmex::tIniSection* const place = ini_.findSection(section);
  const varmex::tIniItem* const found = ini_.findItem(place, item);
  if (!found) {
    reading.id = "missing-item";
    reading.refusal = itemNotFound(section, item);
    reading.message =
        item + (valueless_.contains({section, item}) ? " is missing: the line gives it no value"
                                                     : " is missing");
    return reading;
  }
  const varmex::tResult<Value> value = read(*place, *found);
  if (value) {
    reading.value = *value;
  } else {
    reading.id = id;
    reading.refusal = readerRefusal(value.refusal().message());
    reading.message = '"' + std::string(found->value) + "\" is " + complaint;
  }
  return reading;
}

tReading<std::int32_t> tCheckedFile::number(const std::string& section,
                                            const std::string& item) const {
  return readAs<std::int32_t>("bad-number", "no decimal number of 32 bits", section, item,
                              varmex::tIniFile::numberOf);
}

tReading<std::uint32_t> tCheckedFile::unsignedNumber(const std::string& section,
                                                     const std::string& item) const {
  return readAs<std::uint32_t>(
      "bad-number",
      "no number of 32 bits in decimal, behind 0x in hexadecimal or behind 0 in octal", section,
      item, varmex::tIniFile::unsignedOf);
}

tReading<tNumbers> tCheckedFile::list(const std::string& section, const std::string& item) const {
  return readAs<tNumbers>("bad-list", "no list of numbers between commas", section, item,
                          varmex::tIniFile::numbersOf);
}

tPosition tCheckedFile::at(const std::string& section, const std::string& item) const {
  return at(section, item, {name_, 0, "", ""});
}

tPosition tCheckedFile::at(const std::string& section, const std::string& item,
                           const tPosition& otherwise) const {
  if (const varmex::tIniItem* const found = ini_.store().findItem(section, item)) {
    return {name_, editorLine(found->line), section, item};
  }
  const auto valueless = valueless_.find({section, item});
  if (valueless != valueless_.end()) return {name_, valueless->second, section, item};
  if (const varmex::tIniSection* const found = ini_.store().findSection(section)) {
    return {name_, editorLine(found->line), section, item};
  }
  return {otherwise.file, otherwise.line, section, item};
}

std::vector<std::string> tCheckedFile::sections() const {
  std::vector<std::string> names;
  for (const varmex::tIniSection& section : ini_.store().sections()) {
    names.emplace_back(section.nameView());
  }
  return names;
}

void tCheckedFile::checkEncoding(tFindings& findings) const {
  if (!encoding_) return;
  const std::string reads = "; the library reads UTF-8 or the bytes of a code page";
  if (encoding_->mark.empty()) {
    findings.add(tSeverity::doubtful, "wrong-encoding", {name_, 1, "", ""},
                 "the file looks like UTF-16 without a mark" + reads, "as if the file were empty");
  } else {
    findings.addRefused("wrong-encoding", {name_, 1, "", ""},
                        std::string("the file is in ") + encoding_->name + reads, aboutSession(),
                        readerRefusal("An exception occurred in tIniFile"));
  }
}

void tCheckedFile::checkLines(tFindings& findings) const {
  if (!exists_) return;
  checkEncoding(findings);
  tLineCheck check(*this, findings);
  for (const tSourceLine& line : lines_) {
    if (findings.isFull()) return;
    check.take({bytes_.data() + line.begin, line.end - line.begin}, line.number);
  }
}

}  // namespace tool
