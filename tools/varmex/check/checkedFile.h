#ifndef TOOLS_VARMEX_CHECK_CHECKEDFILE_H
#define TOOLS_VARMEX_CHECK_CHECKEDFILE_H

#include <set>

#include "corpxiTools/iniFile.h"
#include "tools/varmex/check/findings.h"

namespace tool {

using tNumbers = std::vector<std::uint32_t>;

// A description file under check: the library's own reading of it, with positions.
class tCheckedFile {
 public:
  // Throws std::runtime_error when the file is there and can't be read.
  tCheckedFile(const char* name, std::string path);

  const char* name() const { return name_; }
  bool exists() const { return exists_; }
  bool hasSection(const std::string& section) const { return ini_.hasSection(section); }
  bool hasItem(const std::string& section, const std::string& item) const {
    return ini_.hasItem(section, item);
  }
  // The value's text; nothing without the item.
  std::optional<std::string> text(const std::string& section, const std::string& item) const;
  // Nothing without the item or when the library would refuse the value.
  std::optional<std::int64_t> number(const std::string& section, const std::string& item) const;
  std::optional<tNumbers> list(const std::string& section, const std::string& item) const;

  // Where an item is, or its section if it has none, or the file.
  tPosition at(const std::string& section, const std::string& item = "") const;

  std::vector<std::string> sections() const;

  // What the reader passes over, drops or merges on its way through the lines.
  void checkLines(tFindings& findings) const;

 private:
  void checkContent(const std::string& text, tFindings& findings) const;

  const char* name_;
  std::string path_;
  bool exists_;
  varmex::tIniFile ini_;
};

}  // namespace tool

#endif
