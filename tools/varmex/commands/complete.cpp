#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <iostream>
#include <memory>
#include <thread>

#include "tools/synthetic/pciTree.h"
#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/address.h"
#include "tools/varmex/describe/attributes.h"
#include "tools/varmex/describe/compare.h"
#include "tools/varmex/describe/modules.h"
#include "tools/varmex/describe/terminals.h"
#include "tools/varmex/saved/source.h"
#include "tools/varmex/saved/temporaryRoot.h"

namespace tool {

namespace {

struct tCandidate {
  std::string text;
  std::string about;
};

using tCandidates = std::vector<tCandidate>;
using tWords = std::vector<std::string>;

// Whoever presses Tab waits no longer, also where a writer holds the description.
constexpr std::chrono::seconds kPatience{1};

// In the place of candidates: the shell knows its files better.
constexpr const char* kFiles = ":files";

// What `work` answers; nothing where that fails, since a broken part must not disturb the prompt.
template <class Work>
tCandidates quietly(Work work) {
  try {
    return work();
  } catch (const std::exception&) {
    return {};
  }
}

void append(tCandidates& to, tCandidates from) {
  std::move(from.begin(), from.end(), std::back_inserter(to));
}

tCandidates listChassis() {
  tCandidates candidates;
  for (const auto& chassis : varmex::Session().eachChassis()) {
    const std::string about = chassis.item ? chassis.item->modelIfAny().value_or("") : "broken";
    candidates.push_back({std::to_string(chassis.number), about});
  }
  return candidates;
}

// The notation of what has been typed, or else of the output that is asked for.
tPciNotation notationOf(const tWords& words) {
  const auto option = std::find(words.begin(), words.end(), "--pci");
  const bool isAsked = words.end() - option > 1 && option[1] == "hex";
  const bool hasColon = words.back().find(':') != std::string::npos;
  const bool hasDot = words.back().find('.') != std::string::npos;
  return hasColon || (isAsked && !hasDot) ? tPciNotation::hexadecimal : tPciNotation::decimal;
}

tCandidates listAddresses(const varmex::Slot& slot, const tWords& words) {
  const tPciNotation notation = notationOf(words);
  const std::string domain = words.back().starts_with("0000:") ? "0000:" : "";
  tCandidates candidates;
  for (const varmex::Device& device : slot.devices()) {
    const tPciAddress address{device.bus(), device.number(), device.function()};
    candidates.push_back({domain + textOf(address, notation), device.name()});
  }
  return candidates;
}

tCandidates listSlots(const varmex::Chassis& chassis, const tWords& words) {
  tCandidates candidates;
  for (const auto& slot : chassis.eachSlot()) {
    const tCandidates devices =
        quietly([&] { return slot.item ? listAddresses(*slot.item, words) : tCandidates(); });
    candidates.push_back({std::to_string(chassis.number()) + '/' + std::to_string(slot.number),
                          devices.empty() ? "" : devices.front().about});
  }
  return candidates;
}

// The chassis, and the slots of the one that has been typed.
tCandidates places(const tWords& words) {
  tCandidates candidates = listChassis();
  const std::string chassis = words.back().substr(0, words.back().find('/'));
  if (!chassis.empty()) {
    const auto number = static_cast<std::uint32_t>(std::strtoul(chassis.c_str(), nullptr, 10));
    append(candidates,
           quietly([&] { return listSlots(varmex::Session().chassis(number), words); }));
  }
  return candidates;
}

tCandidates chassis(const tWords&) { return listChassis(); }

tCandidates addresses(const tWords& words) {
  tCandidates candidates;
  for (const auto& chassis : varmex::Session().eachChassis()) {
    if (!chassis.item) continue;
    for (const auto& slot : chassis.item->eachSlot()) {
      if (slot.item) append(candidates, quietly([&] { return listAddresses(*slot.item, words); }));
    }
  }
  return candidates;
}

// Of the module whose address stands ahead.
tCandidates terminals(const tWords& words) {
  tCandidates candidates;
  const auto list = listTerminals(tInstallation(), parseAddress(words[words.size() - 2]));
  for (const tJson& terminal : list.terminals) {
    candidates.push_back({terminal.value("name", ""), terminal.value("busName", "")});
  }
  return candidates;
}

tCandidates files(const tWords&) { return {{kFiles, ""}}; }

tCandidates notations(const tWords&) { return {{"dec", "33.15.0"}, {"hex", "21:0f.0, as lspci"}}; }

tCandidates kinds(const tWords&) {
  tCandidates candidates;
  for (const std::string& kind : kindsOfChange()) candidates.push_back({kind, ""});
  return candidates;
}

tCandidates aliases(const tWords&) {
  tCandidates candidates;
  for (const varmex::ModuleAttempt& attempt : varmex::Session().eachModule()) {
    if (attempt.module && !attempt.module->alias.empty()) {
      candidates.push_back({attempt.module->alias, attempt.module->title()});
    }
  }
  return candidates;
}

// Modules by their aliases, slots by their places.
tCandidates ends(const tWords& words) {
  tCandidates candidates = places(words);
  std::erase_if(candidates, [](const tCandidate& candidate) {
    return candidate.text.find('/') == std::string::npos;
  });
  append(candidates, aliases(words));
  return candidates;
}

// Of several columns the last is unfinished.
tCandidates columns(const tWords& words) {
  const std::string ahead = words.back().substr(0, words.back().rfind(',') + 1);
  tCandidates candidates;
  for (const tModuleColumn& column : kModuleColumns) {
    candidates.push_back({ahead + column.key, column.about});
  }
  return candidates;
}

// Of what stands ahead: a chassis, a bridge, an address, or a slot with its module.
tCandidates attributes(const tWords& words) {
  const std::string& place = words[words.size() - 2];
  const bool isBridge = place.find("/bridge/") != std::string::npos;
  const bool isDevice = place.find_first_of(".:") != std::string::npos;
  const bool isChassis = place.find_first_not_of("0123456789") == std::string::npos;
  const bool isMachine = place == "machine";
  tCandidates candidates;
  const auto add = [&](const tAttributes& those) {
    for (const tAttribute& attribute : those) {
      const auto isSame = [&](const tCandidate& one) { return one.text == attribute.name; };
      if (std::any_of(candidates.begin(), candidates.end(), isSame)) continue;
      candidates.push_back({attribute.name, attribute.unit ? attribute.unit : ""});
    }
  };
  const bool isModule = !isChassis && !isBridge && !isMachine;
  if (isMachine) add(kSessionAttributes);
  if (isChassis) add(kChassisAttributes);
  if (isBridge) add(kBridgeAttributes);
  if (isModule && !isDevice) add(kSlotAttributes);
  if (isModule) add(kDeviceAttributes);
  return candidates;
}

// Any place, also by address or alias.
tCandidates placesAndAddresses(const tWords& words) {
  tCandidates candidates = places(words);
  candidates.push_back({"machine", "version and paths"});
  append(candidates, addresses(words));
  append(candidates, aliases(words));
  return candidates;
}

tCandidates faultsOfMachines(const tWords&) {
  tCandidates candidates;
  for (const char* const fault : synthetic::kPciFaults) candidates.push_back({fault, ""});
  return candidates;
}

tCandidates plans(const tWords&) {
  return {{"express:18", "PXI Express, 18 slots"}, {"classic:8", "PXI, 8 slots"}};
}

// What fits as an argument or as an option's value, by verb and name; an empty verb is any.
struct tRule {
  const char* verb;
  const char* argument;
  tCandidates (*candidates)(const tWords& words);
};

constexpr tRule kRules[] = {
    {"show", "place", places},
    {"explain", "place", placesAndAddresses},
    {"explain", "attribute", attributes},
    {"draw", "chassis", chassis},
    {"", "--output", files},
    {"make", "folder", files},
    {"make", "chassis", plans},
    {"make", "--pci-fault", faultsOfMachines},
    {"", "address", addresses},
    {"", "terminal", terminals},
    {"", "--pci", notations},
    {"", "--from", files},
    {"save", "file", files},
    {"find", "text", aliases},
    {"list", "--columns", columns},
    {"triggers", "source", ends},
    {"triggers", "destination", ends},
    {"diff", "before", files},
    {"diff", "after", files},
    {"diff", "--ignore", kinds},
};

bool takesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

tCandidates optionsOf(const CLI::App& line) {
  tCandidates candidates;
  for (const CLI::Option* const option : line.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      candidates.push_back({"--" + name, option->get_description()});
    }
  }
  return candidates;
}

std::vector<const CLI::App*> verbsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* verb) { return !verb->get_group().empty(); });
}

tCandidates namesOf(const std::vector<const CLI::App*>& verbs) {
  tCandidates candidates;
  for (const CLI::App* const verb : verbs) {
    candidates.push_back({verb->get_name(), verb->get_description()});
  }
  return candidates;
}

// The argument or option whose value the last word is; null where none fits.
const CLI::Option* wantedBy(const tWords& words, const CLI::App& verb) {
  const auto positionals =
      verb.get_options([](const CLI::Option* option) { return option->get_positional(); });
  const CLI::Option* open = nullptr;  // an option whose value comes next
  std::size_t count = 0;
  for (std::size_t n = 1; n + 1 < words.size(); ++n) {
    if (open != nullptr) {
      open = nullptr;
    } else if (words[n].starts_with('-')) {
      const CLI::Option* const option = verb.get_option_no_throw(words[n]);
      if (option != nullptr && takesValue(*option)) open = option;
    } else {
      ++count;
    }
  }
  if (open != nullptr) return open;
  if (count < positionals.size()) return positionals[count];
  const bool isRepeated = !positionals.empty() && positionals.back()->get_items_expected_max() > 1;
  return isRepeated ? positionals.back() : nullptr;
}

tCandidates valuesFor(const CLI::Option& option, const tWords& words) {
  for (const tRule& rule : kRules) {
    const bool isVerb = *rule.verb == '\0' || words.front() == rule.verb;
    if (isVerb && option.get_name() == rule.argument) return rule.candidates(words);
  }
  return {};
}

// The installation that --from names, where it stands among the words. What is read once is not for
// whoever presses Tab.
std::unique_ptr<tSource> sourceOf(const tWords& words) {
  const auto option = std::find(words.begin(), words.end(), "--from");
  if (words.end() - option <= 2) return nullptr;
  std::error_code ignored;
  const bool isFolder = std::filesystem::is_directory(option[1], ignored);
  if (!isFolder && !std::filesystem::is_regular_file(option[1], ignored)) {
    throw std::runtime_error("no file");
  }
  return std::make_unique<tSource>(option[1]);
}

tCandidates candidatesFor(const tWords& words, const CLI::App& app) {
  const std::unique_ptr<tSource> source = sourceOf(words);
  const bool isOption = words.back().starts_with('-');
  const auto verbs = verbsOf(app);
  if (words.size() == 1) return isOption ? optionsOf(app) : namesOf(verbs);
  const auto verb = std::find_if(verbs.begin(), verbs.end(), [&](const CLI::App* candidate) {
    return candidate->get_name() == words.front();
  });
  if (verb == verbs.end()) return {};
  const CLI::Option* const wanted = wantedBy(words, **verb);
  if (isOption && (wanted == nullptr || wanted->get_positional())) return optionsOf(**verb);
  return wanted == nullptr ? tCandidates() : valuesFor(*wanted, words);
}

// A line each: the candidate, a tab, what it is. Texts of a description may hold anything.
std::string linesOf(const tCandidates& candidates, const std::string& begin) {
  std::string lines;
  for (const tCandidate& candidate : candidates) {
    if (candidate.text != kFiles && !candidate.text.starts_with(begin)) continue;
    std::string about = candidate.about;
    std::replace_if(
        about.begin(), about.end(),
        [](char byte) { return static_cast<unsigned char>(byte) < ' ' || byte == 0x7F; }, ' ');
    lines += candidate.text + '\t' + about + '\n';
  }
  return lines;
}

// For the completions of the shells, which hand over the words of the command line behind its name
// up to the cursor. Silent and soon done, whatever state the description is in.
class tComplete : public tCommand {
 public:
  tComplete() : tCommand("complete", "List what the last of some words may become") {}

  void addOptions(CLI::App& line) override {
    line.group("");  // no one types it
    line.add_option("words", words_, "The words behind varmex, the last one unfinished");
    app_ = line.get_parent();
  }

  tExitStatus run() override {
    if (words_.empty()) words_.emplace_back();
    std::packaged_task<std::string()> work([words = words_, app = app_] {
      return linesOf(quietly([&] { return candidatesFor(words, *app); }), words.back());
    });
    std::future<std::string> lines = work.get_future();
    std::thread(std::move(work)).detach();
    if (lines.wait_for(kPatience) != std::future_status::ready) {
      removeTemporaryRoot();
      std::_Exit(kDone);
    }
    std::cout << lines.get();
    return kDone;
  }

 private:
  const CLI::App* app_ = nullptr;
  tWords words_;
};

}  // namespace

tCommandPtr makeComplete() { return std::make_unique<tComplete>(); }

}  // namespace tool
