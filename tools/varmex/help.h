#ifndef TOOLS_VARMEX_HELP_H
#define TOOLS_VARMEX_HELP_H

#include <CLI/CLI.hpp>

namespace tool {

// How --help looks: plain words, broken to the width of the terminal. Verbs that are added behind
// it to the application take it, too.
class tHelp : public CLI::Formatter {
 public:
  std::string make_description(const CLI::App* line) const override;
  std::string make_option(const CLI::Option* option, bool isPositional) const override;
  std::string make_subcommand(const CLI::App* verb) const override;
};

}  // namespace tool

#endif
