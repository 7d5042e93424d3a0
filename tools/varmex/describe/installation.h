#ifndef TOOLS_VARMEX_DESCRIBE_INSTALLATION_H
#define TOOLS_VARMEX_DESCRIBE_INSTALLATION_H

#include <CLI/CLI.hpp>

#include "tools/varmex/describe/address.h"
#include "varmex/varmex.hpp"

namespace tool {

// The installation that a command is about. Every command reads it through one of these, with the
// options that say which one and how.
class tInstallation {
 public:
  // For commands that may have the description brought up to date first.
  void addSync(CLI::App& line);

  // Its description as it stands. Tells of a warning, and of whoever holds the lock meanwhile.
  varmex::Session open() const;

  // The trigger lines of the module at a PCI address.
  varmex::RoutingSession openLines(const tPciAddress& address,
                                   varmex::RoutingSession::Lines lines) const;

 private:
  bool synchronizes_ = false;
};

}  // namespace tool

#endif
