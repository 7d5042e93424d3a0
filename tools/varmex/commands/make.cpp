#include <charconv>
#include <fstream>
#include <optional>
#include <stdexcept>

#include "tools/synthetic/installation.h"
#include "tools/synthetic/pciTree.h"
#include "tools/varmex/commands/list.h"
#include "tools/varmex/text/files.h"
#include "tools/varmex/text/output.h"

namespace tool {

namespace {

[[noreturn]] void refuse(const std::string& chassis) {
  throw std::invalid_argument("not KIND[:SLOTS[:MODULES]][xCOUNT]: " + chassis);
}

// Takes the number behind `mark` off the front of `rest`; `otherwise` where there is no such mark.
std::uint32_t takeNumber(std::string& rest, char mark, std::uint32_t otherwise) {
  if (rest.empty() || rest.front() != mark) return otherwise;
  std::uint32_t number = 0;
  const char* const end = rest.data() + rest.size();
  const auto [stop, error] = std::from_chars(rest.data() + 1, end, number);
  if (error != std::errc()) refuse(rest);
  rest.erase(0, static_cast<std::size_t>(stop - rest.data()));
  return number;
}

void appendPlans(const std::string& chassis, std::vector<synthetic::tPlan>& plans) {
  const bool isExpress = chassis.starts_with("express");
  if (!isExpress && !chassis.starts_with("classic")) refuse(chassis);
  std::string rest = chassis.substr(std::string("express").size());
  synthetic::tPlan plan;
  plan.kind = isExpress ? synthetic::tChassisKind::express : synthetic::tChassisKind::classic;
  plan.slots = takeNumber(rest, ':', plan.slots);
  plan.modules = takeNumber(rest, ':', plan.modules);
  const std::uint32_t count = takeNumber(rest, 'x', 1);
  if (!rest.empty()) refuse(chassis);
  if (count > synthetic::kMostChassis) refuse(chassis);
  plans.insert(plans.end(), count, plan);
}

// Writes the description below `folder`, where a session finds it when VARMEX_FSROOT names the
// folder. Throws std::invalid_argument for a text of another form in `chassis`, and
// std::runtime_error when a file can't be written or the folder holds a description already. With
// faults, be it none, writes the PCI tree of the machine as well.
void makeInstallation(const std::string& folder, const std::vector<std::string>& chassis,
                      const std::optional<std::vector<std::string>>& pciFaults) {
  std::vector<synthetic::tPlan> plans;
  for (const std::string& text : chassis) appendPlans(text, plans);
  const synthetic::tTexts texts = synthetic::makeInstallation(plans);
  const std::string description = folder + "/etc/pxi";
  const std::string pxiSys = description + "/pxisys.ini";
  const std::string pxieSys = description + "/pxiesys.ini";
  if (isThere(pxiSys) || isThere(pxieSys)) {
    throw std::runtime_error("there is a description already in " + description);
  }
  const std::string lock = folder + "/var/lib/PXISA";
  if (pciFaults) {
    synthetic::writePciTree(texts.functions, *pciFaults, folder + "/sys/bus/pci/devices");
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
    line.add_option(
            "chassis", chassis_,
            "express or classic, then :SLOTS, :MODULES and xCOUNT if wanted: express:18:7x2")
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
    try {
      const bool hasPci = hasPci_ || !pciFaults_.empty();
      makeInstallation(folder_, chassis_, hasPci ? std::optional(pciFaults_) : std::nullopt);
      return kDone;
    } catch (const std::invalid_argument& error) {
      throw CLI::ValidationError("CHASSIS", error.what());
    }
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
