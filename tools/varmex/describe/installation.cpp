#include "tools/varmex/describe/installation.h"

#include "tools/varmex/text/failures.h"

namespace tool {

void tInstallation::addSync(CLI::App& line) {
  line.add_flag("--sync", synchronizes_, "Has the description brought up to date first");
}

varmex::Session tInstallation::open() const {
  if (!synchronizes_) return varmex::Session();
  varmex::Session session = varmex::Session::synchronized();
  if (session.warning()) tellWarning(*session.warning());
  return session;
}

varmex::RoutingSession tInstallation::openLines(const std::string& address,
                                                varmex::RoutingSession::Lines lines) const {
  return varmex::RoutingSession(address + ':' + std::to_string(lines));
}

}  // namespace tool
