#ifndef TOOLS_VARMEX_CHECK_CHECKEDFILE_H
#define TOOLS_VARMEX_CHECK_CHECKEDFILE_H

#include <map>

#include "corpxiTools/iniFile.h"
#include "tools/varmex/check/findings.h"
#include "tools/varmex/check/refusals.h"
#include "tools/varmex/text/encoding.h"

namespace tool {

using tNumbers = std::vector<std::uint32_t>;

// What a reader of the library makes of an item: a value, or what is wrong with it.
template <class Value>
struct tReading {
  std::optional<Value> value;
  const char* id = nullptr;  // of the finding
  std::string message;
  tRefusedAnswer refusal;

  explicit operator bool() const { return value.has_value(); }
  const Value& operator*() const { return *value; }
};

// A line of a file, by where its bytes lie.
struct tSourceLine {
  std::size_t begin;
  std::size_t end;
  std::uint32_t number;  // as an editor counts, from 1
};

// A description file under check: the library's own reading of it, with positions.
class tCheckedFile {
 public:
  // Throws std::runtime_error when the file is there and can't be read.
  tCheckedFile(const char* name, std::string path);

  const char* name() const { return name_; }
  bool exists() const { return exists_; }
  bool hasSection(const std::string& section) const { return ini_.hasSection(section); }
  bool hasItem(const std::string& section, const std::string& item) const {
    return ini_.hasItem(ini_.findSection(section), item);
  }
  std::vector<std::string> sections() const;

  // The value's text; nothing without the item.
  std::optional<std::string> text(const std::string& section, const std::string& item) const;

  // As the library reads them: a signed decimal number, an unsigned one in base 0, a list.
  tReading<std::int32_t> number(const std::string& section, const std::string& item) const;
  tReading<std::uint32_t> unsignedNumber(const std::string& section, const std::string& item) const;
  tReading<tNumbers> list(const std::string& section, const std::string& item) const;

  // Where an item is, or the line that gives it no value, or its section, or `otherwise`, which is
  // what needs it.
  tPosition at(const std::string& section, const std::string& item = "") const;
  tPosition at(const std::string& section, const std::string& item,
               const tPosition& otherwise) const;

  // Whether the library reads nothing of it, for its encoding. It is checked as it is once it was
  // saved as UTF-8.
  bool isMisread() const { return encoding_.has_value(); }

  // What the reader refuses, passes over, drops or merges on its way through the lines.
  void checkLines(tFindings& findings) const;

  // The bytes of a line by its number; empty without such a line.
  std::string_view lineText(std::uint32_t number) const;

 private:
  void load();
  void takeLines();
  void checkEncoding(tFindings& findings) const;
  std::uint32_t editorLine(std::uint32_t readerLine) const;
  template <class Value, class Read>
  tReading<Value> readAs(const char* id, const char* complaint, const std::string& section,
                         const std::string& item, Read read) const;

  const char* name_;
  std::string path_;
  bool exists_;
  std::string bytes_;  // of the lines, cut as the library cuts them
  std::optional<tWideEncoding> encoding_;
  varmex::tIniFile ini_;
  std::vector<tSourceLine> lines_;
  std::map<std::pair<std::string, std::string>, std::uint32_t> valueless_;  // to the line
};

}  // namespace tool

#endif
