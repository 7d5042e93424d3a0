#ifndef SOURCE_VARMEX_FILEOBSERVER_H
#define SOURCE_VARMEX_FILEOBSERVER_H

#include <optional>
#include <string>

#include "halden/internal/DirectoryMonitorImpl.h"
#include "source/varmex/SystemChangeObserver.h"

namespace varmex {

// Watches the two description files of a session.
class FileObserver final : public SystemChangeObserver {
 public:
  FileObserver(const std::string& pxiSysPath, const std::string& pxieSysPath);

  bool wait(std::uint32_t timeoutMs) override { return waitBeyond(arm(), timeoutMs); }
  void cancel() override { monitor_->cancel(); }
  std::uint64_t arm() override;
  bool waitBeyond(std::uint64_t seen, std::uint32_t timeoutMs) override;

 private:
  std::optional<halden::DirectoryMonitorImpl> monitor_;  // there once the constructor is done
};

}  // namespace varmex

#endif
