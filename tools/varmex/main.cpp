// varmex: shows what the library answers. A client of the exported functions alone.

#include <CLI/CLI.hpp>
#include <charconv>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

#include "tools/varmex/check.h"
#include "tools/varmex/draw.h"
#include "tools/varmex/make.h"
#include "tools/varmex/routing.h"
#include "tools/varmex/show.h"
#include "tools/varmex/watch.h"

namespace {

using namespace tool;

constexpr int kFailed = 1;
constexpr int kBadUsage = 2;

// "CHASSIS" or "CHASSIS/SLOT"; nothing means all.
struct tPlace {
  std::optional<std::uint32_t> chassis;
  std::optional<std::uint32_t> slot;
};

std::uint32_t parseNumber(const std::string& text) {
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) throw CLI::ValidationError("CHASSIS[/SLOT]", text);
  return number;
}

tPlace parsePlace(const std::string& text) {
  if (text.empty()) return {};
  const std::size_t slash = text.find('/');
  const std::uint32_t chassis = parseNumber(text.substr(0, slash));
  if (slash == std::string::npos) return {chassis, std::nullopt};
  return {chassis, parseNumber(text.substr(slash + 1))};
}

void print(const tJson& json, bool asJson, void (*show)(const tJson&, std::ostream&)) {
  if (asJson) {
    // Texts of a description may be in any encoding; what is no UTF-8 is replaced.
    std::cout << json.dump(2, ' ', false, tJson::error_handler_t::replace) << '\n';
  } else {
    show(json, std::cout);
  }
}

void printStatus(const char* severity, const varmex::Error& error) {
  std::cerr << "varmex: " << severity << ' ' << error.code() << " ("
            << (error.constant().empty() ? "unnamed" : error.constant()) << ")\n";
  if (!error.detail().empty()) std::cerr << "  " << error.detail() << '\n';
}

// What the subcommands are told, and what they answer.
struct tCommandLine {
  std::string place;
  bool asJson = false;
  bool synchronizes = false;
  std::string address;
  std::string terminal;
  std::string token;
  bool once = false;
  std::optional<double> seconds;
  std::optional<std::uint32_t> drawnChassis;
  std::string output;
  std::string folder;
  std::vector<std::string> chassis;
  int exitStatus = 0;
};

varmex::Session openSession(const tCommandLine& line) {
  if (!line.synchronizes) return varmex::Session();
  varmex::Session session = varmex::Session::synchronized();
  if (session.warning()) printStatus("warning", *session.warning());
  return session;
}

void show(const tCommandLine& line) {
  const tPlace place = parsePlace(line.place);
  const varmex::Session session = openSession(line);
  if (!place.chassis) return print(describe(session), line.asJson, showSession);
  const varmex::Chassis chassis = session.chassis(*place.chassis);
  if (!place.slot) return print(describe(chassis), line.asJson, showChassis);
  print(describe(chassis.slot(*place.slot)), line.asJson, showSlot);
}

void save(const std::string& text, const std::string& path) {
  if (path == "-") {
    std::cout << text << std::flush;
    if (!std::cout) throw std::runtime_error("can't write the standard output");
    return;
  }
  std::ofstream file(path, std::ios::binary);
  file << text << std::flush;
  if (!file) throw std::runtime_error("can't write " + path);
}

void draw(const tCommandLine& line) {
  const varmex::Session session;
  tJson chassis = tJson::array();
  if (line.drawnChassis) {
    chassis.push_back(describe(session.chassis(*line.drawnChassis)));
  } else {
    chassis = describe(session)["Chassis"];
  }
  if (chassis.empty()) throw std::runtime_error("no chassis to draw");
  std::ostringstream picture;
  drawChassis({chassis.begin(), chassis.end()}, picture);
  save(picture.str(), line.output);
}

void watch(tCommandLine& line) {
  tWatchOptions options{line.once, std::nullopt};
  if (line.seconds) options.timeoutMs = static_cast<std::uint32_t>(*line.seconds * 1000);
  const bool changed = watch(options, std::cout, std::cerr);
  // Who asked for one change and saw none wants to know.
  if (line.once && !changed) line.exitStatus = kFailed;
}

void addShow(CLI::App& app, tCommandLine& line) {
  CLI::App* const command = app.add_subcommand("show", "Lists chassis, slots and modules");
  command->add_option("place", line.place, "What to show: CHASSIS or CHASSIS/SLOT");
  command->add_flag("--json", line.asJson, "For a program");
  command->add_flag("--sync", line.synchronizes, "Has the description brought up to date first");
  command->callback([&line] { show(line); });
}

void addDraw(CLI::App& app, tCommandLine& line) {
  CLI::App* const command = app.add_subcommand("draw", "Draws the chassis from the front, as SVG");
  command->add_option("chassis", line.drawnChassis, "The number of the one to draw");
  command->add_option("-o,--output", line.output, "The file; - is the standard output")->required();
  command->callback([&line] { draw(line); });
}

// The exit status tells findings from a description that can't be read.
void check(tCommandLine& line) {
  line.exitStatus = kBadUsage;
  const tJson findings = checkDescription();
  print(findings, line.asJson, showFindings);
  line.exitStatus = findings.empty() ? 0 : kFailed;
}

void addCheck(CLI::App& app, tCommandLine& line) {
  CLI::App* const command =
      app.add_subcommand("check", "Reports what is wrong or doubtful with the description");
  command->add_flag("--json", line.asJson, "For a program");
  command->callback([&line] { check(line); });
}

void addTerminals(CLI::App& app, tCommandLine& line) {
  CLI::App* const command =
      app.add_subcommand("terminals", "Lists the trigger-line terminals of a module");
  command->add_option("address", line.address, "PCI address: BUS.DEVICE.FUNCTION")->required();
  command->add_flag("--json", line.asJson, "For a program");
  command->callback([&line] { print(listTerminals(line.address), line.asJson, showTerminals); });
}

void addRoute(CLI::App& app, tCommandLine& line) {
  CLI::App* const command =
      app.add_subcommand("route", "Walks one route through its life and shows each answer");
  command->add_option("address", line.address, "PCI address: BUS.DEVICE.FUNCTION")->required();
  command->add_option("terminal", line.terminal, "The terminal, such as PXI_Trig0")->required();
  command->add_option("--token", line.token, "The token to hold it under");
  command->add_flag("--json", line.asJson, "For a program");
  command->callback([&line] {
    print(walkRoute(line.address, line.terminal, line.token), line.asJson, showRoute);
  });
}

void addWatch(CLI::App& app, tCommandLine& line) {
  CLI::App* const command = app.add_subcommand(
      "watch", "Tells when the description changed, and what, until interrupted");
  command->add_flag("--once", line.once, "End after the first change");
  command->add_option("--timeout", line.seconds, "End after that many seconds")
      ->check(CLI::Range(0.0, 4e6));
  command->callback([&line] { watch(line); });
}

void addMake(CLI::App& app, tCommandLine& line) {
  CLI::App* const command =
      app.add_subcommand("make", "Writes the description of an installation that does not exist");
  command->add_option("folder", line.folder, "Where to, for VARMEX_FSROOT")->required();
  command
      ->add_option("chassis", line.chassis,
                   "KIND[:SLOTS[:MODULES]][xCOUNT], with KIND express or classic")
      ->required();
  command->callback([&line] {
    try {
      makeInstallation(line.folder, line.chassis);
    } catch (const std::invalid_argument& error) {
      throw CLI::ValidationError("CHASSIS", error.what());
    }
  });
}

}  // namespace

int main(int count, char** arguments) {
  CLI::App app("Shows the PXI installation of this machine.");
  app.require_subcommand(1);
  tCommandLine line;
  for (const auto add : {addShow, addDraw, addCheck, addTerminals, addRoute, addWatch, addMake})
    add(app, line);
  try {
    app.parse(count, arguments);
    return line.exitStatus;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kBadUsage;
  } catch (const varmex::Error& error) {
    printStatus("error", error);
  } catch (const std::exception& error) {
    std::cerr << "varmex: " << error.what() << '\n';
  }
  return line.exitStatus != 0 ? line.exitStatus : kFailed;
}
