#ifndef TOOLS_VARMEX_DESCRIBE_INSTALLATION_H
#define TOOLS_VARMEX_DESCRIBE_INSTALLATION_H

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

#include "tools/varmex/describe/address.h"
#include "varmex/varmex.hpp"

namespace tool {

class tSource;
struct tSavedInstallation;

// What --from names.
enum class tFrom { filesAndFolders, folders };

// The installation that a command is about. Every command reads it through one of these, with the
// options that say which one and how.
class tInstallation {
 public:
  tInstallation();
  tInstallation(const tInstallation&) = delete;
  tInstallation& operator=(const tInstallation&) = delete;
  ~tInstallation();

  // For all commands that read: --from, which names another installation than the machine's own.
  void addFrom(CLI::App& line, tFrom what = tFrom::filesAndFolders);

  // Behind addFrom, for commands that may have the description brought up to date first.
  void addSync(CLI::App& line);

  // From here on the process reads this installation. `open` and `openLines` do it by themselves;
  // commands that look at its files first ask for it. Throws std::runtime_error for what can't be
  // read.
  void enter() const;

  // What the saved file holds that the process reads; null for all else.
  const tSavedInstallation* saved() const;

  // What --from names; nothing for the machine's own.
  const std::optional<std::string>& from() const { return from_; }

  // Its description as it stands. Tells of a warning, and of whoever holds the lock meanwhile.
  varmex::Session open() const;

  // The trigger lines of the module at a PCI address.
  varmex::RoutingSession openLines(const tPciAddress& address,
                                   varmex::RoutingSession::Lines lines) const;

 private:
  bool synchronizes_ = false;
  tFrom accepted_ = tFrom::filesAndFolders;
  std::optional<std::string> from_;
  mutable std::unique_ptr<tSource> source_;  // once entered
};

}  // namespace tool

#endif
