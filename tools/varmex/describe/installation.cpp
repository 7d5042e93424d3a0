#include "tools/varmex/describe/installation.h"

#include "tools/varmex/describe/json.h"
#include "tools/varmex/describe/lockNotice.h"
#include "tools/varmex/saved/source.h"
#include "tools/varmex/text/failures.h"

namespace tool {

tInstallation::tInstallation() = default;
tInstallation::~tInstallation() = default;

void tInstallation::addFrom(CLI::App& line, tFrom what) {
  const bool isFolder = what == tFrom::folders;
  line.add_option("--from", from_,
                  isFolder ? "Read the installation below this folder (Linux)"
                           : "Read a file that varmex save made, - for one from the standard "
                             "input, or the installation below a folder (Linux)")
      ->type_name(isFolder ? "FOLDER" : "FILE|FOLDER");
  accepted_ = what;
}

void tInstallation::addSync(CLI::App& line) {
  line.add_flag("--sync", synchronizes_,
                "Have the PXI service library bring the description up to date first")
      ->excludes("--from");
}

void tInstallation::enter() const {
  if (!from_ || source_) return;
  source_ = std::make_unique<tSource>(*from_);
  if (accepted_ == tFrom::folders && source_->saved() != nullptr) {
    throw std::runtime_error(*from_ + " is a saved file, which never changes; this takes folders");
  }
}

const tSavedInstallation* tInstallation::saved() const {
  return source_ ? source_->saved() : nullptr;
}

varmex::Session tInstallation::open() const {
  enter();
  const tLockNotice notice;
  if (!synchronizes_) return varmex::Session();
  varmex::Session session = varmex::Session::synchronized();
  if (session.warning()) tellWarning(*session.warning());
  return session;
}

varmex::RoutingSession tInstallation::openLines(const tPciAddress& address,
                                                varmex::RoutingSession::Lines lines) const {
  enter();
  const tLockNotice notice;
  try {
    return varmex::RoutingSession(address.bus, address.device, address.function, lines);
  } catch (const varmex::Error& error) {
    tJson status = tJson::parse(error.json(), nullptr, false);
    if (error.code() != varmex_errorUnknownItem || !status.is_object()) throw;
    status["address"] = textOf(address, tPciNotation::decimal);
    throw varmex::Error(error.code(), status.dump().c_str());
  }
}

}  // namespace tool
