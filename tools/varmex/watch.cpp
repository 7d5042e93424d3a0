#include "tools/varmex/watch.h"

#include <chrono>
#include <map>
#include <thread>

#include "tools/varmex/fields.h"

namespace tool {

namespace {

using tClock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kRetryPause{200};

// By what a person calls them, everything that is to be told of: a chassis by its own attributes, a
// module by those of its slot and its devices.
std::map<std::string, tJson> partsOf(const tJson& session) {
  std::map<std::string, tJson> parts;
  for (const tJson& chassis : session["Chassis"]) {
    const std::string number = textOf(chassis, "ChassisNumber");
    tJson own = chassis;
    for (const tJson& slot : chassis["Slots"]) {
      if (!slot["Devices"].empty()) {
        parts["module in slot " + number + '/' + textOf(slot, "SlotNumber")] = slot;
      }
    }
    own.erase("Slots");
    parts["chassis " + number] = std::move(own);
  }
  return parts;
}

std::string titleOf(const tJson& part) {
  const tJson& named =
      part.contains("Devices") && !part["Devices"].empty() ? part["Devices"].front() : part;
  for (const char* kind : {"Chassis", "Device"}) {
    const std::string vendor = textOf(named, (std::string(kind) + "Vendor").c_str());
    const std::string model = textOf(named, (std::string(kind) + "Model").c_str());
    if (!vendor.empty()) return " (" + vendor + ' ' + model + ')';
  }
  return {};
}

// One wait on a session; nothing when the time of the whole watch is over.
bool waitForChange(const varmex::Session& session, std::optional<tClock::time_point> end) {
  const auto left = end ? std::chrono::ceil<std::chrono::milliseconds>(*end - tClock::now())
                        : std::chrono::milliseconds::zero();
  return (end ? session.wait(left) : session.wait()) == varmex::WaitResult::changed;
}

bool isOver(std::optional<tClock::time_point> end) { return end && tClock::now() >= *end; }

// A session of the description as it is now; while there is none, its faults are told of, each kind
// once.
std::optional<varmex::Session> openSoon(std::optional<tClock::time_point> end,
                                        std::ostream& faults) {
  std::string told;
  while (true) {
    try {
      varmex::Session session;
      describe(session);
      return session;
    } catch (const varmex::Error& error) {
      if (told != error.what()) faults << "broken: " << error.what() << '\n';
      told = error.what();
    }
    if (isOver(end)) return std::nullopt;
    std::this_thread::sleep_for(kRetryPause);
  }
}

}  // namespace

std::vector<std::string> compareSessions(const tJson& before, const tJson& after) {
  const auto old = partsOf(before);
  const auto now = partsOf(after);
  std::vector<std::string> lines;
  for (const auto& [name, part] : old) {
    const auto found = now.find(name);
    if (found == now.end()) {
      lines.push_back("gone     " + name + titleOf(part));
    } else if (found->second != part) {
      lines.push_back("changed  " + name + titleOf(found->second));
    }
  }
  for (const auto& [name, part] : now) {
    if (!old.contains(name)) lines.push_back("new      " + name + titleOf(part));
  }
  return lines;
}

bool watch(const tWatchOptions& options, std::ostream& out, std::ostream& faults) {
  std::optional<tClock::time_point> end;
  if (options.timeoutMs) end = tClock::now() + std::chrono::milliseconds(*options.timeoutMs);
  bool anyChange = false;
  std::optional<varmex::Session> session = openSoon(end, faults);
  while (session) {
    const tJson before = describe(*session);
    if (!waitForChange(*session, end)) break;
    anyChange = true;
    out << "The description changed.\n";
    session = openSoon(end, faults);
    if (session) {
      for (const std::string& line : compareSessions(before, describe(*session))) {
        out << "  " << line << '\n';
      }
    }
    out.flush();
    if (options.once) break;
  }
  return anyChange;
}

}  // namespace tool
