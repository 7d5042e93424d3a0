#include <algorithm>
#include <iostream>
#include <sstream>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/modules.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/output.h"

namespace tool {

namespace {

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
  });
  return text;
}

// Without the quotes that tables put around aliases, and with one blank between words.
std::string tidied(std::string text) {
  std::erase(text, '"');
  std::string tidy;
  std::istringstream words(text);
  for (std::string word; words >> word;) tidy += (tidy.empty() ? "" : " ") + word;
  return tidy;
}

// Whether a word, or several with blanks between, is a part of what a module is known by. A whole
// PCI address, in either notation, fits itself alone: "5.0.0" is no part of "15.0.0".
class tWord {
 public:
  explicit tWord(const std::string& text) : text_(lowered(tidied(text))) {
    if (const auto address = addressIn(text_)) address_ = textOf(*address, tPciNotation::decimal);
  }

  bool fits(const tJson& module) const {
    if (module.contains("failures") && module["failures"].contains("opening")) return false;
    const auto contains = [&](const std::string& text) {
      return lowered(tidied(text)).find(text_) != std::string::npos;
    };
    const std::string alias = textOf(module, "alias");
    const std::string vendor = textOf(module, "vendor");
    const std::string model = textOf(module, "model");
    // As `list` and `diff` write it, and as a person would.
    for (const std::string& text :
         {joined({alias, vendor, model}, " "), joined({alias, model}, " "),
          joined({vendor, model, alias}, " "), textOf(module, "serial"), textOf(module, "name")}) {
      if (contains(text)) return true;
    }
    const tJson& resources = module["resources"];
    return fitsPlace(module) || fitsAddress(module["addresses"]) ||
           std::any_of(resources.begin(), resources.end(), contains);
  }

 private:
  // That of any slot that it covers.
  bool fitsPlace(const tJson& module) const {
    const tJson& slots = module["slots"];
    return std::any_of(slots.begin(), slots.end(), [&](const tJson& slot) {
      return text_ == textOf(module, "chassis") + '/' + slot.dump();
    });
  }

  bool fitsAddress(const tJson& addresses) const {
    return std::any_of(addresses.begin(), addresses.end(), [&](const std::string& decimal) {
      if (!address_.empty()) return decimal == address_;
      const std::string hexadecimal = textOf(parseAddress(decimal), tPciNotation::hexadecimal);
      return decimal.starts_with(text_) || hexadecimal.starts_with(text_);
    });
  }

  std::string text_;
  std::string address_;  // in the library's notation; empty for any other word
};

class tFind : public tCommand {
 public:
  tFind() : tCommand("find", "Find modules by a part of what they are called, or by address") {}

  void addOptions(CLI::App& line) override {
    line.add_option("text", words_,
                    "A part of the alias, vendor, model, resource name, serial number of the "
                    "chassis, a place (1/9), or a PCI address in either form; of several words all "
                    "must fit")
        ->required()
        ->check([](const std::string& text) { return tidied(text).empty() ? "it is empty" : ""; });
    line.add_flag("--json", asJson_, "Print JSON");
    addPciOption(line, notation_);
    installation_.addFrom(line);
  }

  tExitStatus run() override {
    tJson document =
        asJson_ ? describeModulesOrFailure(installation_) : describeModules(installation_.open());
    const bool hasModules = !document["modules"].empty();
    const std::size_t count = keepFitting(document["modules"]);
    const bool isWhole = !hasFailures(document);
    if (asJson_) {
      printJson(document);
    } else {
      showModules(document, moduleColumns({"place", "addresses", "module", "link"}), notation_);
    }
    if (count > 0) return isWhole ? kDone : kFailed;
    if (!hasModules) std::cerr << noneText("modules");
    tellFailure(std::runtime_error("no module fits \"" + joined(words_, " ") + '"' +
                                   (isWhole ? "" : " among those that can be read")));
    return kFailed;
  }

 private:
  // Takes out the modules that don't fit, and leaves what can't be read: it might.
  std::size_t keepFitting(tJson& modules) const {
    std::vector<tWord> words(words_.begin(), words_.end());
    std::size_t count = 0;
    tJson kept = tJson::array();
    for (tJson& module : modules) {
      const bool fits = std::all_of(words.begin(), words.end(),
                                    [&](const tWord& word) { return word.fits(module); });
      count += fits ? 1 : 0;
      if (fits || !module.contains("name")) kept.push_back(std::move(module));
    }
    modules = std::move(kept);
    return count;
  }

  // Whether what is left may lack an answer.
  static bool hasFailures(const tJson& document) {
    const auto isBroken = [](const tJson& item) { return item.contains("failures"); };
    const tJson& modules = document["modules"];
    return isBroken(document) || std::any_of(modules.begin(), modules.end(), isBroken);
  }

  tInstallation installation_;
  std::vector<std::string> words_;
  bool asJson_ = false;
  tPciNotation notation_ = tPciNotation::decimal;
};

}  // namespace

tCommandPtr makeFind() { return std::make_unique<tFind>(); }

}  // namespace tool
