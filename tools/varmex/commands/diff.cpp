#include <algorithm>
#include <iostream>
#include <optional>

#include "corpxiTools/fileSystem/fileStatus.h"
#include "corpxiTools/fileSystem/utils.h"
#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/compare.h"
#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/lockNotice.h"
#include "tools/varmex/machine/thisMachine.h"
#include "tools/varmex/saved/source.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/output.h"
#include "tools/varmex/text/terminal.h"

namespace tool {

namespace {

// One of the two installations that are compared.
struct tSide {
  tJson description;
  tJson origin;  // where it is from
};

std::string nameOf(const std::string& path) {
  return path.empty() ? "this machine's installation" : visible(path);
}

tJson describeNow() {
  const auto isMissing = [](const std::string& path) {
    return varmex::queryFileStatus(path.c_str()).code == varmex::kFileNotFound;
  };
  if (isMissing(varmex::getPxiSysPath()) && isMissing(varmex::getPxieSysPath())) {
    throw tNoDescription();
  }
  const tLockNotice notice;
  return describe(varmex::Session());
}

std::size_t faultsOf(const tSide& side) { return side.description["failureCount"]; }

void warnOfFaults(const tSide& side, const std::string& path) {
  const std::size_t count = faultsOf(side);
  if (count == 0) return;
  std::cerr << "varmex: warning: faults hide " << count << (count == 1 ? " answer" : " answers")
            << " of " << nameOf(path) << "; \"varmex check\" tells what to mend\n";
}

// Thrown for a side that can't be read, when that has been told.
struct tTold {};

// What fails tells which of the two it was, and is told while the files are at hand in which the
// item at fault is looked up.
tJson describeSide(const std::string& path) {
  try {
    return describeNow();
  } catch (const varmex::Error& failure) {
    std::cerr << "varmex: " << nameOf(path) << " can't be read:\n";
    tellFailure(failure);
    throw tTold();
  }
}

// Without a path, this machine's own.
tSide readSide(const std::string& path) {
  if (path.empty()) return {describeSide(path), {{"host", hostName()}}};
  const tSource source(path);
  tSide side = {describeSide(path), {{"from", path}}};
  if (const tSavedInstallation* const saved = source.saved()) {
    side.origin["host"] = saved->host;
    side.origin["taken"] = saved->taken;
  }
  return side;
}

tSide read(const std::string& path) {
  tSide side = readSide(path);
  warnOfFaults(side, path);
  side.origin["failureCount"] = faultsOf(side);
  return side;
}

void show(const std::vector<tChange>& changes, bool isWhole, tPciNotation notation) {
  const std::size_t columns = outputColumns().value_or(std::string::npos);
  for (const tChange& change : changes) {
    const char* indentation = "";
    for (const std::string& line : wrapped(visible(lineOf(change, notation)), columns)) {
      std::cout << indentation << line << '\n';
      indentation = "    ";
    }
  }
  if (changes.empty()) {
    std::cout << (isWhole ? "No differences.\n" : "No differences in what can be read.\n");
  } else {
    std::cout << changes.size() << (changes.size() == 1 ? " difference.\n" : " differences.\n");
  }
}

class tDiff : public tCommand {
 public:
  tDiff() : tCommand("diff", "Tell what is different between two installations") {}

  void addOptions(CLI::App& line) override {
    line.add_option(
            "before", before_,
            "A file that varmex save made, - for one from the standard input, or a folder (Linux)")
        ->required();
    line.add_option("after", after_, "Another one; without it this machine as it is now");
    line.add_flag("--json", asJson_, "Print JSON");
    line.add_flag("--addresses", withAddresses_, "Tell of changed PCI addresses, too");
    addPciOption(line, notation_);
    line.add_option("--ignore", ignored_,
                    "Leave out a kind of difference: new, gone, moved, changed; chassis, module, "
                    "slot, bridge; or an attribute, such as link-width. May be repeated")
        ->allow_extra_args(false)
        ->type_name("KIND");
  }

  // The exit status tells differences from what can't be read.
  tExitStatus run() override {
    refuseUnknownKinds();
    try {
      const tSide before = read(before_);
      const tSide after = read(after_);
      std::vector<tChange> changes = compare(before.description, after.description);
      std::erase_if(changes, [this](const tChange& change) { return isIgnored(change); });
      const bool isWhole = faultsOf(before) + faultsOf(after) == 0;
      if (asJson_) {
        tJson json = {{"schemaVersion", kSchemaVersion},
                      {"before", before.origin},
                      {"after", after.origin},
                      {"changes", tJson::array()}};
        for (const tChange& change : changes) json["changes"].push_back(jsonOf(change));
        printJson(json);
      } else {
        show(changes, isWhole, notation_);
      }
      // What hides answers on both sides may hide a difference.
      if (changes.empty()) return isWhole ? kDone : kBadUsage;
      return kFailed;
    } catch (const tTold&) {
      return kBadUsage;
    } catch (const std::exception& failure) {
      tellFailure(failure);
      return kBadUsage;
    }
  }

 private:
  void refuseUnknownKinds() const {
    const std::vector<std::string> kinds = kindsOfChange();
    for (const std::string& kind : ignored_) {
      if (std::find(kinds.begin(), kinds.end(), kind) != kinds.end()) continue;
      std::string list;
      for (const std::string& known : kinds) list += (list.empty() ? "" : ", ") + known;
      throw CLI::ValidationError("--ignore", "no such kind: " + kind + "; there are " + list);
    }
  }

  bool isIgnored(const tChange& change) const {
    if (!withAddresses_ && isOfKind(change, kAddressKind)) return true;
    return std::any_of(ignored_.begin(), ignored_.end(),
                       [&](const std::string& kind) { return isOfKind(change, kind); });
  }

  std::string before_;
  std::string after_;
  bool asJson_ = false;
  bool withAddresses_ = false;
  tPciNotation notation_ = tPciNotation::decimal;
  std::vector<std::string> ignored_;
};

}  // namespace

tCommandPtr makeDiff() { return std::make_unique<tDiff>(); }

}  // namespace tool
