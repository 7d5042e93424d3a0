#include <chrono>
#include <iostream>
#include <thread>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/compare.h"
#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/installation.h"

namespace tool {

namespace {

using tClock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kRetryPause{200};

// One wait on a session; nothing when the time of the whole watch is over.
bool waitForChange(const varmex::Session& session, std::optional<tClock::time_point> end) {
  const auto left = end ? std::chrono::ceil<std::chrono::milliseconds>(*end - tClock::now())
                        : std::chrono::milliseconds::zero();
  return (end ? session.wait(left) : session.wait()) == varmex::WaitResult::changed;
}

bool isOver(std::optional<tClock::time_point> end) { return end && tClock::now() >= *end; }

class tWatch : public tCommand {
 public:
  tWatch() : tCommand("watch", "Tells when the description changed, and what, until interrupted") {}

  void addOptions(CLI::App& line) override {
    line.add_flag("--once", once_, "End after the first change");
    line.add_option("--timeout", seconds_, "End after that many seconds")
        ->check(CLI::Range(0.0, 4e6));
  }

  tExitStatus run() override {
    std::optional<tClock::time_point> end;
    if (seconds_) {
      end = tClock::now() + std::chrono::milliseconds(static_cast<std::int64_t>(*seconds_ * 1000));
    }
    const bool changed = watch(end);
    // Who asked for one change and saw none wants to know.
    return once_ && !changed ? kFailed : kDone;
  }

 private:
  // Tells of changes until the time is over or, if asked, after the first. False when there was
  // none.
  bool watch(std::optional<tClock::time_point> end) const {
    bool anyChange = false;
    std::optional<varmex::Session> session = openSoon(end);
    while (session) {
      const tJson before = describe(*session);
      if (!waitForChange(*session, end)) break;
      anyChange = true;
      std::cout << "The description changed.\n";
      session = openSoon(end);
      if (session) {
        for (const std::string& line : compareSessions(before, describe(*session))) {
          std::cout << "  " << line << '\n';
        }
      }
      std::cout.flush();
      if (once_) break;
    }
    return anyChange;
  }

  // A session of the description as it is now; while there is none, its faults are told of, each
  // kind once.
  std::optional<varmex::Session> openSoon(std::optional<tClock::time_point> end) const {
    std::string told;
    while (true) {
      try {
        varmex::Session session = installation_.open();
        describe(session);
        return session;
      } catch (const varmex::Error& error) {
        if (told != error.what()) std::cerr << "broken: " << error.what() << '\n';
        told = error.what();
      }
      if (isOver(end)) return std::nullopt;
      std::this_thread::sleep_for(kRetryPause);
    }
  }

  tInstallation installation_;
  bool once_ = false;
  std::optional<double> seconds_;
};

}  // namespace

tCommandPtr makeWatch() { return std::make_unique<tWatch>(); }

}  // namespace tool
