#include <stdexcept>
#include <string>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/lockNotice.h"
#include "tools/varmex/saved/collect.h"
#include "tools/varmex/text/output.h"

namespace tool {

namespace {

class tSave : public tCommand {
 public:
  tSave() : tCommand("save", "Write the installation into one file, to be looked at elsewhere") {}

  void addOptions(CLI::App& line) override {
    line.add_option("file", file_,
                    "The file, which other commands read with --from; the standard output for - "
                    "and without it");
    installation_.addFrom(line, tFrom::folders);
  }

  tExitStatus run() override {
    installation_.enter();
    tSavedInstallation saved = take();
    saved.version = VARMEX_VERSION;
    const std::string text = textOf(saved);
    checkReadable(text);
    save(text, file_);
    return kDone;
  }

 private:
  static tSavedInstallation take() {
    const tLockNotice notice;
    return takeInstallation();
  }

  // What is beyond the bounds of the format would be refused when it is needed.
  static void checkReadable(const std::string& text) {
    try {
      readSaved(text);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(
          std::string("what was saved of this installation could not be read: ") + error.what());
    }
  }

  tInstallation installation_;
  std::string file_ = "-";
};

}  // namespace

tCommandPtr makeSave() { return std::make_unique<tSave>(); }

}  // namespace tool
