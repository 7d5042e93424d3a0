// varmex: shows what the library answers. A client of the exported functions alone.

#include <CLI/CLI.hpp>
#include <charconv>
#include <iostream>
#include <optional>

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

// The parts of a status text that tell a person what happened.
void printStatus(const char* severity, const tError& error) {
  const tJson status = tJson::parse(error.what(), nullptr, false);
  std::cerr << "varmex: " << severity << ' ' << error.code();
  if (!status.is_object()) {
    std::cerr << '\n';
    return;
  }
  std::cerr << " (" << status.value("error_constant", "unnamed") << ")\n";
  const tJson flat = status.flatten();
  for (const auto& [key, value] : flat.items()) {
    if (key == "/error_constant" || key == "/component" || key == "/file" || key == "/line") {
      continue;
    }
    const std::string name = key.substr(key.rfind('/') + 1);
    std::cerr << "  " << name << ": "
              << (value.is_string() ? value.get<std::string>() : value.dump()) << '\n';
  }
}

struct tShowOptions {
  std::string place;
  bool asJson = false;
  bool synchronizes = false;
};

void show(const tShowOptions& options) {
  const tPlace place = parsePlace(options.place);
  const bool asJson = options.asJson;
  std::optional<tError> warning;
  const tItem session = options.synchronizes ? openSynchronizedSession(warning) : openSession();
  if (warning) printStatus("warning", *warning);
  if (!place.chassis) return print(describe(session), asJson, showSession);
  const tItem chassis = openChassis(session, *place.chassis);
  if (!place.slot) return print(describe(chassis), asJson, showChassis);
  print(describe(openSlot(chassis, *place.slot)), asJson, showSlot);
}

}  // namespace

int main(int count, char** arguments) {
  CLI::App app("Shows the PXI installation of this machine.");
  app.require_subcommand(1);
  bool asJson = false;
  tShowOptions shown;
  CLI::App* const showCommand = app.add_subcommand("show", "Lists chassis, slots and modules");
  showCommand->add_option("place", shown.place, "What to show: CHASSIS or CHASSIS/SLOT");
  showCommand->add_flag("--json", shown.asJson, "For a program");
  showCommand->add_flag("--sync", shown.synchronizes,
                        "Has the description brought up to date first");
  showCommand->callback([&] { show(shown); });

  std::string address;
  CLI::App* const terminalsCommand =
      app.add_subcommand("terminals", "Lists the trigger-line terminals of a module");
  terminalsCommand->add_option("address", address, "PCI address: BUS.DEVICE.FUNCTION")->required();
  terminalsCommand->add_flag("--json", asJson, "For a program");
  terminalsCommand->callback([&] { print(listTerminals(address), asJson, showTerminals); });

  std::string terminal;
  std::string token;
  CLI::App* const routeCommand =
      app.add_subcommand("route", "Walks one route through its life and shows each answer");
  routeCommand->add_option("address", address, "PCI address: BUS.DEVICE.FUNCTION")->required();
  routeCommand->add_option("terminal", terminal, "The terminal, such as PXI_Trig0")->required();
  routeCommand->add_option("--token", token, "The token to hold it under");
  routeCommand->add_flag("--json", asJson, "For a program");
  routeCommand->callback([&] { print(walkRoute(address, terminal, token), asJson, showRoute); });

  bool once = false;
  std::optional<double> seconds;
  bool unchanged = false;
  CLI::App* const watchCommand = app.add_subcommand(
      "watch", "Tells when the description changed, and what, until interrupted");
  watchCommand->add_flag("--once", once, "End after the first change");
  watchCommand->add_option("--timeout", seconds, "End after that many seconds")
      ->check(CLI::Range(0.0, 4e6));
  watchCommand->callback([&] {
    tWatchOptions options{once, std::nullopt};
    if (seconds) options.timeoutMs = static_cast<std::uint32_t>(*seconds * 1000);
    unchanged = !watch(options, std::cout, std::cerr) && once;
  });

  try {
    app.parse(count, arguments);
    // Who asked for one change and saw none wants to know.
    return unchanged ? kFailed : 0;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kBadUsage;
  } catch (const tError& error) {
    printStatus("error", error);
  } catch (const std::exception& error) {
    std::cerr << "varmex: " << error.what() << '\n';
  }
  return kFailed;
}
