// varmex: shows what the library answers. A client of the exported functions alone, but
// for explain, which holds a copy of the model that tells what it reads.

#include <algorithm>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/help.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/commandLine.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/streams.h"

namespace {

using namespace tool;

// In the order in which the help lists them.
constexpr tCommandPtr (*kCommands[])() = {
    makeShow,      makeFind,  makeList,  makeDraw, makeReport, makeCheck, makeTriggers, makeExplain,
    makeTerminals, makeRoute, makeWatch, makeSave, makeDiff,   makeMake,  makeComplete};

// Tells of bad usage, and prints the help and the version that were asked for.
tExitStatus endParsing(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> words = app.remaining();
  if (error.get_name() != "RequiredError" || words.empty() || !app.get_subcommands().empty()) {
    // What was typed may steer the terminal.
    const int code = app.exit({error.get_name(), visible(error.what()), error.get_exit_code()});
    return code == 0 ? kDone : kBadUsage;
  }
  app.exit({"ExtrasError", '"' + visible(words.front()) + "\" is no subcommand",
            CLI::ExitCodes::ExtrasError});
  return kBadUsage;
}

}  // namespace

int main(int count, char** arguments) {
  const tStreams streams;
  CLI::App app(
      "Shows what a PXI or PXI Express installation holds, how its trigger lines run, and what is "
      "wrong with its description.",
      "varmex");
  app.formatter(std::make_shared<tHelp>());
  app.set_help_flag("-h,--help", "Print this help and end");
  app.set_version_flag("--version", "varmex " VARMEX_VERSION, "Print the version and end");
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // "/folder" is a path on every system
  tExitStatus status = kFailed;
  tCommandPtr commands[std::size(kCommands)];
  for (std::size_t n = 0; n < std::size(kCommands); ++n) {
    commands[n] = kCommands[n]();
    CLI::App* const line = app.add_subcommand(commands[n]->name(), commands[n]->about());
    commands[n]->addOptions(*line);
    line->callback([&status, command = commands[n].get()] { status = command->run(); });
  }
  try {
    std::vector<std::string> words = commandLine(count, arguments);
    std::reverse(words.begin(), words.end());  // as CLI takes them
    try {
      app.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
      status = endParsing(app, error);
    }
    // What did not reach its reader was not done.
    if (!std::cout.flush()) throw std::runtime_error("can't write the standard output");
    return status;
  } catch (const std::exception& failure) {
    tellFailure(failure);
    return kFailed;
  }
}
