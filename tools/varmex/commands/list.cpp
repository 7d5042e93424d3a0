#include "tools/varmex/commands/list.h"

#include <algorithm>
#include <iostream>

#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/modules.h"
#include "tools/varmex/text/output.h"

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
  tJson row;
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

constexpr const char* kDefaultColumns[] = {"place", "address", "alias",   "vendor",
                                           "model", "link",    "identity"};
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
        ->delimiter(',');
    addPciOption(line, notation_);
    installation_.addFrom(line);
  }

  tExitStatus run() override {
    const tModuleColumns columns = moduleColumns(keysOrDefault());
    tJson document = describeModules(installation_.open());
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
  static std::string columnNames() {
    std::string names;
    for (const tModuleColumn& column : kModuleColumns) {
      names += (names.empty() ? "" : ", ") + std::string(column.key);
    }
    return names;
  }

  std::vector<std::string> keysOrDefault() const {
    if (!keys_.empty() || asJsonLines_) return keys_;
    if (asCsv_) return {std::begin(kDefaultCsvColumns), std::end(kDefaultCsvColumns)};
    return {std::begin(kDefaultColumns), std::end(kDefaultColumns)};
  }

  tInstallation installation_;
  bool asCsv_ = false;
  bool asJsonLines_ = false;
  std::vector<std::string> keys_;
  tPciNotation notation_ = tPciNotation::decimal;
};

}  // namespace

tCommandPtr makeList() { return std::make_unique<tList>(); }

}  // namespace tool
