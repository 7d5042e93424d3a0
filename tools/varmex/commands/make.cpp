#include <algorithm>
#include <charconv>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "tools/synthetic/installation.h"
#include "tools/synthetic/pciTree.h"
#include "tools/varmex/commands/list.h"
#include "tools/varmex/text/files.h"
#include "tools/varmex/text/output.h"

namespace tool {

namespace {

struct tRange {
  const char* name;
  std::size_t first;
  std::size_t last;
};

// Takes one chassis of the command line apart, from its front.
class tChassisText {
 public:
  explicit tChassisText(const std::string& text) : text_(text), rest_(text) {}

  [[noreturn]] void refuse(const std::string& why) const {
    throw CLI::ValidationError("CHASSIS", text_ + ": " + why);
  }

  bool take(std::string_view word) {
    if (!rest_.starts_with(word)) return false;
    rest_.remove_prefix(word.size());
    return true;
  }

  // The number behind `mark`, if that is there.
  std::optional<std::uint32_t> take(char mark, const tRange& range) {
    if (!take({&mark, 1})) return std::nullopt;
    const std::string_view digits =
        rest_.substr(0, std::min(rest_.find_first_not_of("0123456789"), rest_.size()));
    if (digits.empty()) refuseForm();
    rest_.remove_prefix(digits.size());
    std::uint32_t number = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (result.ec != std::errc() || number < range.first || number > range.last) {
      refuse(range.name + (" is " + std::to_string(range.first)) + " to " +
             std::to_string(range.last) + ", not " + std::string(digits));
    }
    return number;
  }

  [[noreturn]] void refuseForm() const {
    refuse("not KIND[:SLOTS[:MODULES]][xCOUNT] with express or classic as KIND");
  }

  void end() const {
    if (!rest_.empty()) refuseForm();
  }

 private:
  std::string text_;
  std::string_view rest_;
};

void appendPlans(const std::string& chassis, std::vector<synthetic::tPlan>& plans) {
  tChassisText text(chassis);
  synthetic::tPlan plan;
  if (text.take("classic")) {
    plan.kind = synthetic::tChassisKind::classic;
  } else if (!text.take("express")) {
    text.refuseForm();
  }
  if (const auto slots =
          text.take(':', {"SLOTS", synthetic::kFewestSlots, synthetic::kMostSlots})) {
    plan.slots = *slots;
    plan.modules = text.take(':', {"MODULES", 0, plan.slots}).value_or(plan.modules);
  }
  const std::size_t room = synthetic::kMostChassis - plans.size();
  const std::uint32_t count = text.take('x', {"COUNT", 1, synthetic::kMostChassis}).value_or(1);
  text.end();
  if (count > room) {
    text.refuse("the installation has " + std::to_string(plans.size() + count) +
                " chassis with it, and " + std::to_string(synthetic::kMostChassis) + " at most");
  }
  plans.insert(plans.end(), count, plan);
}

// What `make` answers; tells the argument at fault for what it refuses.
template <class Make>
auto makeFor(const char* argument, Make make) {
  try {
    return make();
  } catch (const std::invalid_argument& error) {
    throw CLI::ValidationError(argument, error.what());
  }
}

// Writes the description below `folder`, where a session finds it when VARMEX_FSROOT names the
// folder. Throws CLI::ValidationError for what can't be made, and std::runtime_error when a file
// can't be written or the folder holds a description already. With faults, be it none, writes the
// PCI tree of the machine as well.
void makeInstallation(const std::string& folder, const std::vector<std::string>& chassis,
                      const std::optional<std::vector<std::string>>& pciFaults) {
  std::vector<synthetic::tPlan> plans;
  for (const std::string& text : chassis) appendPlans(text, plans);
  const synthetic::tTexts texts =
      makeFor("CHASSIS", [&] { return synthetic::makeInstallation(plans); });
  const std::string description = folder + "/etc/pxi";
  const std::string pxiSys = description + "/pxisys.ini";
  const std::string pxieSys = description + "/pxiesys.ini";
  if (isThere(pxiSys) || isThere(pxieSys)) {
    throw std::runtime_error("there is a description already in " + description +
                             "; name another folder");
  }
  const std::string lock = folder + "/var/lib/PXISA";
  if (pciFaults) {
    makeFor(pciFaults->empty() ? "--pci" : "--pci-fault", [&] {
      synthetic::writePciTree(texts.functions, *pciFaults, folder + "/sys/bus/pci/devices");
    });
  }
  makeFolder(description);
  makeFolder(lock);
  save(texts.pxiSys, pxiSys);
  if (!texts.pxieSys.empty()) save(texts.pxieSys, pxieSys);
  std::ofstream(filePath(lock + "/configuration.ini"), std::ios::app);
}

class tMake : public tCommand {
 public:
  tMake() : tCommand("make", "Write a simulated installation, for trials without hardware") {}

  void addOptions(CLI::App& line) override {
    line.add_option("folder", folder_,
                    "Where to write it; VARMEX_FSROOT=FOLDER varmex show reads it")
        ->required();
    line.add_option("chassis", chassis_,
                    "express or classic, then :SLOTS (2 to 18), :MODULES (so many at most) and "
                    "xCOUNT (1 to "
                    "255) if wanted: express:18:7x2")
        ->required();
    line.add_flag("--pci", hasPci_, "Write the machine's PCI tree, too, for varmex check --live");
    line.add_option("--pci-fault", pciFaults_,
                    "The same with a fault: missing, unlisted, driverless, narrow, slow. May be "
                    "repeated")
        ->allow_extra_args(false)
        ->type_name("FAULT")
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(synthetic::kPciFaults),
                                                       std::end(synthetic::kPciFaults)))
                    .description(""));
  }

  tExitStatus run() override {
    const bool hasPci = hasPci_ || !pciFaults_.empty();
    makeInstallation(folder_, chassis_, hasPci ? std::optional(pciFaults_) : std::nullopt);
    return kDone;
  }

 private:
  std::string folder_;
  std::vector<std::string> chassis_;
  bool hasPci_ = false;
  std::vector<std::string> pciFaults_;
};

}  // namespace

tCommandPtr makeMake() { return std::make_unique<tMake>(); }

}  // namespace tool
