#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <thread>
#include <utility>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/compare.h"
#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/reason.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/output.h"

namespace tool {

namespace {

using tClock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kRetryPause{200};

std::string localTime(const char* form) {
  const std::time_t now = std::time(nullptr);
  char text[64];
  return {text, std::strftime(text, sizeof text, form, std::localtime(&now))};
}

// How far local time is ahead of UTC. The form "%z" says it in words on some systems.
int minutesAhead() {
  const std::time_t now = std::time(nullptr);
  const std::tm local = *std::localtime(&now);
  const std::tm utc = *std::gmtime(&now);
  const int years = local.tm_year - utc.tm_year;
  const int days = years != 0 ? years : local.tm_yday - utc.tm_yday;
  return (days * 24 + local.tm_hour - utc.tm_hour) * 60 + local.tm_min - utc.tm_min;
}

// "2026-11-21T14:31:07+01:00"
std::string localTimeForPrograms() {
  const int ahead = minutesAhead();
  const int minutes = std::abs(ahead);
  const auto twoDigits = [](int number) { return std::to_string(100 + number).substr(1); };
  return localTime("%Y-%m-%dT%H:%M:%S") + (ahead < 0 ? '-' : '+') + twoDigits(minutes / 60) + ':' +
         twoDigits(minutes % 60);
}

// Empty for a number that the option takes.
std::string complaintAboutSeconds(const std::string& text) {
  double seconds = 0;
  if (CLI::detail::lexical_cast(text, seconds) && seconds >= 0 && seconds <= 4e6) return {};
  return '"' + text + "\" is no number of seconds from 0 to 4000000";
}

class tWatch : public tCommand {
 public:
  tWatch()
      : tCommand("watch",
                 "Tell what changes in the installation, as it happens, until interrupted") {}

  void addOptions(CLI::App& line) override {
    line.add_flag("--once", once_, "End after the first change");
    line.add_option("--timeout", seconds_, "End after so many seconds, 4000000 at most")
        ->type_name("SECONDS")
        ->check(complaintAboutSeconds);
    line.add_flag("--json", asJson_, "Print JSON, one object a line");
    addPciOption(line, notation_);
    installation_.addFrom(line, tFrom::folders);
  }

  tExitStatus run() override {
    installation_.enter();
    if (seconds_) {
      end_ = tClock::now() + std::chrono::milliseconds(static_cast<std::int64_t>(*seconds_ * 1000));
    }
    std::optional<varmex::Session> session;
    bool anyChange = false;
    do {
      session = open();
      if (session && tellChanges(describe(*session))) anyChange = true;
      // Who asked for one change and saw none wants to know.
      if (once_ && anyChange) return kDone;
    } while (waitForChange(session));
    return once_ && !anyChange ? kFailed : kDone;
  }

 private:
  // A session of the description as it is now. What keeps it from being read is told once.
  std::optional<varmex::Session> open() {
    try {
      // Once what is in the way has been told, no notice tells it again.
      std::optional<varmex::Session> session =
          trouble_.empty() ? installation_.open() : varmex::Session();
      // Chassis that go are told one by one; who begins without any wants to know why it is quiet.
      if (known_.is_null() || !trouble_.empty()) requireDescription();
      if (!trouble_.empty()) tell("The description can be read.", {{"event", "readable"}});
      trouble_.clear();
      return session;
    } catch (const std::exception& failure) {
      const tReason reason = reasonOf(failure);
      const std::string text = failureText(reason.constant, reason.code, reason.sentence);
      if (text != trouble_) {
        tJson event = {{"event", "unreadable"}};
        event.update(jsonOf(reason));
        tell(visible(joined({"The description can't be read:", text, reason.remedy}, " ")), event);
      }
      trouble_ = text;
      // What is there later is news, all of it, to who has seen nothing yet.
      if (known_.is_null()) known_ = {{"Chassis", tJson::array()}};
      return std::nullopt;
    }
  }

  // What is different from what was known; false when nothing is.
  bool tellChanges(tJson now) {
    const tJson before = std::exchange(known_, std::move(now));
    if (before.is_null()) return false;
    const std::vector<tChange> changes = compare(before, known_);
    for (const tChange& change : changes) tell(visible(lineOf(change, notation_)), jsonOf(change));
    return !changes.empty();
  }

  void tell(const std::string& line, const tJson& event) const {
    if (asJson_) {
      tJson json = {{"schemaVersion", kSchemaVersion}, {"time", localTimeForPrograms()}};
      json.update(event);
      printJsonLine(json);
    } else {
      std::cout << localTime("%Y-%m-%d %H:%M:%S  ") << line << '\n';
    }
    if (!std::cout.flush()) throw std::runtime_error("can't write the standard output");
  }

  // False when the time of the whole watch is over. Without a session, and where a wait is not
  // possible, it is time to look again after a while.
  bool waitForChange(const std::optional<varmex::Session>& session) const {
    try {
      if (session && !end_) return session->wait(), true;
      if (session) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*end_ - tClock::now());
        return session->wait(left) == varmex::WaitResult::changed;
      }
    } catch (const varmex::Error&) {
      // Told of, if it lasts, by the session that can't be opened.
    }
    std::this_thread::sleep_for(kRetryPause);
    return !end_ || tClock::now() < *end_;
  }

  tInstallation installation_;
  bool once_ = false;
  bool asJson_ = false;
  tPciNotation notation_ = tPciNotation::decimal;
  std::optional<double> seconds_;
  std::optional<tClock::time_point> end_;
  std::string trouble_;  // why the description can't be read, as told
  tJson known_;          // the last description that could be read; null ahead of the first
};

}  // namespace

tCommandPtr makeWatch() { return std::make_unique<tWatch>(); }

}  // namespace tool
