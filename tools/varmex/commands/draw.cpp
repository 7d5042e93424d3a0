#include <iostream>
#include <sstream>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/machine/thisMachine.h"
#include "tools/varmex/picture/picture.h"
#include "tools/varmex/picture/rsvgConvert.h"
#include "tools/varmex/saved/savedFile.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/moment.h"
#include "tools/varmex/text/output.h"

namespace tool {

namespace {

class tDraw : public tCommand {
 public:
  tDraw() : tCommand("draw", "Draw the chassis from the front") {}

  void addOptions(CLI::App& line) override {
    line.add_option("chassis", chassis_, "Number of the chassis to draw; all without")
        ->check([](const std::string& text) {
          std::uint32_t number = 0;
          const bool isNumber = CLI::detail::lexical_cast(text, number);
          return isNumber ? "" : '"' + text + "\" is no number of a chassis, such as 2";
        });
    line.add_option(
            "-o,--output", output_,
            "The file: .svg, or .png or .pdf where rsvg-convert is installed, .pdf with a page "
            "for each chassis; - is SVG on the standard output")
        ->type_name("FILE")
        ->required();
    addPciOption(line, notation_);
    installation_.addFrom(line);
  }

  tExitStatus run() override {
    const tFormat& format = formatOf(output_);
    tJson description = describe(installation_.open(), {chassis_, std::nullopt});
    const tJson& chassis = description["Chassis"];
    if (chassis.empty()) {
      requireDescription();
      throw std::runtime_error("no chassis to draw");
    }
    markFaults(description);
    (this->*format.write)({chassis.begin(), chassis.end()});
    showFaults(description, std::cerr);
    return description["failureCount"] == 0 ? kDone : kFailed;
  }

 private:
  using tChassis = std::vector<tJson>;

  struct tFormat {
    const char* ending;
    void (tDraw::*write)(const tChassis&) const;
  };

  static const tFormat& formatOf(const std::string& path) {
    static constexpr tFormat kFormats[] = {
        {".svg", &tDraw::writeSvg}, {".png", &tDraw::writePng}, {".pdf", &tDraw::writePdf}};
    if (path == "-") return kFormats[0];
    for (const tFormat& format : kFormats) {
      if (path.ends_with(format.ending)) return format;
    }
    throw CLI::ValidationError("--output", "pictures are .svg, .png or .pdf, and " + path +
                                               " does not end with any of these");
  }

  void writeSvg(const tChassis& chassis) const { save(draw(chassis), output_); }

  void writePng(const tChassis& chassis) const { convertPictures({draw(chassis)}, "png", output_); }

  void writePdf(const tChassis& chassis) const {
    std::vector<std::string> pages;
    for (const tJson& one : chassis) pages.push_back(draw({one}));
    convertPictures(pages, "pdf", output_);
  }

  std::string draw(const tChassis& chassis) const {
    const tSavedInstallation* const saved = installation_.saved();
    const std::string host = saved ? saved->host : hostName();
    const std::string moment = momentForPeople(saved ? saved->taken : momentInUtc());
    std::ostringstream picture;
    drawChassis(chassis, notation_, joined({host, moment}, ", "), picture);
    return picture.str();
  }

  tInstallation installation_;
  std::optional<std::uint32_t> chassis_;
  std::string output_;
  tPciNotation notation_ = tPciNotation::decimal;
};

}  // namespace

tCommandPtr makeDraw() { return std::make_unique<tDraw>(); }

}  // namespace tool
