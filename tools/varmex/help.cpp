#include "tools/varmex/help.h"

#include <algorithm>

#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/terminal.h"

namespace tool {

namespace {

constexpr std::size_t kBeside = 24;  // where descriptions begin
constexpr std::size_t kLeast = 20;   // columns for them
constexpr std::size_t kOrdinary = 80;
constexpr std::size_t kMost = 100;  // which are still read with ease

std::size_t helpColumns() { return std::min(outputColumns().value_or(kOrdinary), kMost); }

std::string entry(std::string name, const std::string& about) {
  name.insert(0, 2, ' ');
  std::string text;
  if (columnsOf(name) + 2 > kBeside) {
    text = name + '\n';
    name.clear();
  }
  const std::size_t room = std::max(helpColumns(), kBeside + kLeast) - kBeside;
  for (const std::string& line : wrapped(about, room)) {
    name.resize(std::max(name.size(), kBeside), ' ');
    text += name + line + '\n';
    name.clear();
  }
  return text;
}

// "--json, --csv"
std::string namesOf(const std::set<CLI::Option*>& options) {
  std::string names;
  for (const CLI::Option* const option : options) {
    names += (names.empty() ? "" : ", ") + option->get_name();
  }
  return names;
}

std::string termsOf(const CLI::Option& option) {
  std::string terms;
  const auto add = [&terms](const std::string& term) {
    terms += (terms.empty() ? " (" : "; ") + term;
  };
  if (option.get_required() && !option.get_positional()) add("required");
  if (!option.get_needs().empty()) add("only with " + namesOf(option.get_needs()));
  if (!option.get_excludes().empty()) add("not with " + namesOf(option.get_excludes()));
  return terms.empty() ? terms : terms + ')';
}

}  // namespace

std::string tHelp::make_description(const CLI::App* line) const {
  std::string text;
  for (const std::string& part : wrapped(line->get_description(), helpColumns())) {
    text += part + '\n';
  }
  return text;
}

std::string tHelp::make_option(const CLI::Option* option, bool isPositional) const {
  std::string name = make_option_name(option, isPositional);
  if (isPositional) {
    if (option->get_items_expected_max() > 1) name += " ...";
  } else if (option->get_items_expected_max() > 0) {
    name += ' ' + option->get_type_name();
  }
  return entry(name, option->get_description() + termsOf(*option));
}

std::string tHelp::make_subcommand(const CLI::App* verb) const {
  return entry(verb->get_name(), verb->get_description());
}

}  // namespace tool
