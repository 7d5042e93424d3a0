#include "tools/varmex/commands/list.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>

#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/modules.h"
#include "tools/varmex/saved/source.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/output.h"
#include "tools/varmex/text/terminal.h"

namespace tool {

namespace {

// For spreadsheets and data bases (RFC 4180): quoted where it has to be.
std::string csvCell(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char byte : text) quoted += byte == '"' ? std::string(2, byte) : std::string(1, byte);
  return quoted + '"';
}

void writeCsvLine(const std::vector<std::string>& cells) {
  std::string line;
  for (const std::string& cell : cells) {
    if (&cell != &cells.front()) line += ',';
    line += csvCell(cell);
  }
  std::cout << line << '\n';
}

// What can't be read is told on the standard error output, and its cell is empty.
std::vector<std::string> csvCells(tJson module, const tModuleColumns& columns,
                                  tPciNotation notation) {
  module.erase("failures");
  std::vector<std::string> cells;
  for (const tModuleColumn* const column : columns) {
    cells.push_back(textOf(module, *column, notation));
  }
  return cells;
}

void writeCsv(tJson& document, const tModuleColumns& columns, tPciNotation notation) {
  std::vector<std::string> titles;
  for (const tModuleColumn* const column : columns) titles.emplace_back(column->key);
  writeCsvLine(titles);
  for (const tJson& module : document["modules"]) {
    writeCsvLine(csvCells(module, columns, notation));
  }
  markFaults(document);
  showFaults(document, std::cerr);
}

// The values of some columns, numbers as numbers and lists as lists; all the document has without.
tJson selected(const tJson& module, const tModuleColumns& columns, tPciNotation notation) {
  if (columns.empty()) return module;
  tJson row = tJson::object();
  for (const tModuleColumn* const column : columns) {
    if (module.contains(column->key)) {
      row[column->key] = module[column->key];
    } else if (const std::string text = textOf(module, *column, notation); !text.empty()) {
      row[column->key] = text;
    }
  }
  if (module.contains("failures")) row["failures"] = module["failures"];
  return row;
}

// One that is named so; a link that leads nowhere is told of, and a pipe is nobody's wish there.
bool isSavedFile(const std::filesystem::directory_entry& entry) {
  std::error_code ignored;
  const std::filesystem::file_type type = entry.status(ignored).type();
  return entry.path().extension() == ".json" && (type == std::filesystem::file_type::regular ||
                                                 type == std::filesystem::file_type::not_found);
}

// A folder that is no root stands for the saved files in it, in the order of their names.
std::vector<std::string> allSources(const std::vector<std::string>& from) {
  std::vector<std::string> sources;
  for (const std::string& path : from) {
    const std::filesystem::path folder(path);
    std::vector<std::string> files;
    if (std::filesystem::is_directory(folder) && !std::filesystem::exists(folder / "etc")) {
      for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (isSavedFile(entry)) files.push_back(entry.path().string());
      }
    }
    std::sort(files.begin(), files.end());
    if (files.empty()) files.push_back(path);
    sources.insert(sources.end(), files.begin(), files.end());
  }
  return sources;
}

// Where there are none, what was looked for is told beside the table or the rows.
tJson tellIfNone(tJson document) {
  if (document["modules"].empty()) std::cerr << noneText("modules");
  return document;
}

tJson describeSource(const std::string& path) {
  std::optional<tSource> source;  // the paths that a failure tells are this one's
  try {
    source.emplace(path);
    return tellIfNone(describeModules(varmex::Session()));
  } catch (const tNoSource& failure) {
    return describeUnreadModules(std::runtime_error(failure.reason()));
  } catch (const std::exception& failure) {
    return describeUnreadModules(failure);
  }
}

// One document of all, each module with where it was read.
tJson describeEach(const std::vector<std::string>& sources) {
  tJson all = {{"modules", tJson::array()}};
  std::size_t failureCount = 0;
  for (const std::string& source : sources) {
    const tJson document = describeSource(source);
    failureCount += document["failureCount"].get<std::size_t>();
    for (const tJson& module : document["modules"]) {
      tJson row = {{"from", source}};
      row.update(module);
      all["modules"].push_back(std::move(row));
    }
  }
  all["failureCount"] = failureCount;
  return all;
}

constexpr const char* kDefaultColumns[] = {"place", "address", "alias", "vendor", "model", "link"};
constexpr std::size_t kColumnsOfIdentity = 100;  // a narrower output has no room for it
constexpr const char* kDefaultCsvColumns[] = {
    "place",         "address",     "alias",     "vendor",  "model",  "width",
    "possibleWidth", "moduleWidth", "slotWidth", "reduced", "serial", "identity"};

class tList : public tCommand {
 public:
  tList() : tCommand("list", "List the modules, a row each, as a table or for other programs") {}

  void addOptions(CLI::App& line) override {
    CLI::Option* const csv = line.add_flag("--csv", asCsv_, "Print comma-separated values");
    line.add_flag("--jsonl", asJsonLines_, "Print a JSON object a line")->excludes(csv);
    line.add_option("--columns", keys_, "Names of columns between commas: " + columnNames())
        ->type_name("NAMES")
        ->delimiter(',');
    addPciOption(line, notation_);
    line.add_option(
            "--from", from_,
            "Read a file that varmex save made, all such files (*.json) in a folder, or the "
            "installation below a folder (Linux); may be given many times")
        ->type_name("FILE|FOLDER")
        ->expected(1)
        ->take_all();
  }

  tExitStatus run() override {
    const std::vector<std::string> sources = allSources(from_);
    const bool isMany =
        sources.size() > 1 || sources != from_ || (!from_.empty() && asksForSource());
    const tModuleColumns columns = moduleColumns(keysOrDefault(isMany));
    if (!isMany && !from_.empty()) source_.emplace(from_.front());
    tJson document = isMany ? describeEach(sources) : describeOne();
    if (asJsonLines_) {
      for (const tJson& module : document["modules"]) {
        printJsonLine(selected(module, columns, notation_));
      }
    } else if (asCsv_) {
      writeCsv(document, columns, notation_);
    } else {
      showModules(document, columns, notation_);
    }
    return document["failureCount"] == 0 ? kDone : kFailed;
  }

 private:
  tJson describeOne() const {
    const tInstallation installation;
    return tellIfNone(asJsonLines_ ? describeModulesOrFailure(installation)
                                   : describeModules(installation.open()));
  }

  static std::string columnNames() {
    std::string names;
    for (const tModuleColumn& column : kModuleColumns) {
      names += (names.empty() ? "" : ", ") + std::string(column.key);
    }
    return names;
  }

  bool asksForSource() const {
    return std::find(keys_.begin(), keys_.end(), "from") != keys_.end();
  }

  std::vector<std::string> keysOrDefault(bool isMany) const {
    std::vector<std::string> keys = keys_;
    if (keys.empty() && asJsonLines_) return keys;
    if (isMany && !asksForSource()) keys.insert(keys.begin(), "from");
    if (!keys_.empty()) return keys;
    if (asCsv_) {
      keys.insert(keys.end(), std::begin(kDefaultCsvColumns), std::end(kDefaultCsvColumns));
    } else {
      keys.insert(keys.end(), std::begin(kDefaultColumns), std::end(kDefaultColumns));
      const bool isWide = outputColumns().value_or(kColumnsOfIdentity) >= kColumnsOfIdentity;
      keys.emplace_back(isWide ? "identity" : "serial");
    }
    return keys;
  }

  std::vector<std::string> from_;
  std::optional<tSource> source_;  // where there is one alone
  bool asCsv_ = false;
  bool asJsonLines_ = false;
  std::vector<std::string> keys_;
  tPciNotation notation_ = tPciNotation::decimal;
};

}  // namespace

tCommandPtr makeList() { return std::make_unique<tList>(); }

}  // namespace tool
