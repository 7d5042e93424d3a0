#ifndef SOURCE_VARMEX_FILEOBSERVER_H
#define SOURCE_VARMEX_FILEOBSERVER_H

#include <optional>

#include "halden/internal/DirectoryMonitorImpl.h"
#include "ostrel/quarks/throwingStatus.h"
#include "source/varmex/SystemChangeObserver.h"

namespace varmex {

// Watches the folder of the two description files.
class FileObserver final : public SystemChangeObserver {
 public:
  FileObserver();

  bool wait(std::uint32_t timeoutMs) override { return waitBeyond(changes(), timeoutMs); }
  void cancel() override { monitor_->cancel(); }
  std::uint64_t changes() const override { return monitor_->changes(); }
  bool waitBeyond(std::uint64_t seen, std::uint32_t timeoutMs) override;

 private:
  std::optional<halden::DirectoryMonitorImpl> monitor_;  // there once the constructor is done
};

}  // namespace varmex

#endif
