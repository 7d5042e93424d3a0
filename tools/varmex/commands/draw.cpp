#include <iostream>
#include <sstream>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/picture/picture.h"
#include "tools/varmex/text/output.h"

namespace tool {

namespace {

class tDraw : public tCommand {
 public:
  tDraw() : tCommand("draw", "Draw the chassis from the front, as an SVG picture") {}

  void addOptions(CLI::App& line) override {
    line.add_option("chassis", chassis_, "Number of the chassis to draw; all without");
    line.add_option("-o,--output", output_,
                    "The file, which ends with .svg; - is the standard output")
        ->required();
    addPciOption(line, notation_);
    installation_.addFrom(line);
  }

  tExitStatus run() override {
    refuseOtherFormats(output_);
    tJson description = describe(installation_.open(), {chassis_, std::nullopt});
    const tJson& chassis = description["Chassis"];
    if (chassis.empty()) throw std::runtime_error("no chassis to draw");
    markFaults(description);
    std::ostringstream picture;
    drawChassis({chassis.begin(), chassis.end()}, notation_, picture);
    save(picture.str(), output_);
    showFaults(description, std::cerr);
    return description["failureCount"] == 0 ? kDone : kFailed;
  }

 private:
  // The ending of the file's name tells the format.
  static void refuseOtherFormats(const std::string& path) {
    if (path == "-" || path.ends_with(".svg")) return;
    throw CLI::ValidationError("--output",
                               "pictures are SVG, and " + path + " does not end with .svg");
  }

  tInstallation installation_;
  std::optional<std::uint32_t> chassis_;
  std::string output_;
  tPciNotation notation_ = tPciNotation::decimal;
};

}  // namespace

tCommandPtr makeDraw() { return std::make_unique<tDraw>(); }

}  // namespace tool
