#include "pxiRoutingAdaptor/pxiRoutingAdaptorDevice.h"

#include "telmar/TelmarUtils.h"
#include "varmex/varmex.h"

namespace varmex::nCorPxiRoutingAdaptor {

namespace {

struct tLineGroup {
  const char* busType;
  std::vector<const char*> names;
};

const tLineGroup& groupOf(const std::string& busType) {
  static const tLineGroup kGroups[] = {
      {"PXI_Trig",
       {"PXI_Trig0", "PXI_Trig1", "PXI_Trig2", "PXI_Trig3", "PXI_Trig4", "PXI_Trig5", "PXI_Trig6",
        "PXI_Trig7"}},
      {"PXI_Star", {"PXI_Star"}},
      {"PXIe_DStar", {"PXIe_DStarA", "PXIe_DStarB", "PXIe_DStarC"}},
  };
  for (const tLineGroup& group : kGroups) {
    if (group.busType == busType) return group;
  }
  tFailure({varmex_errorInvalidParameter, "varmex_errorInvalidParameter"}, OSTREL_HERE).raise();
}

}  // namespace

std::unique_lock<std::mutex> pxiRoutingAdaptorDevice::lockOwners() const {
  return std::unique_lock<std::mutex>(lock_);
}

bool pxiRoutingAdaptorDevice::reserveTerminal(const pxiRoutingAdaptorSession* session,
                                              const std::string& token, std::uint32_t terminal) {
  std::string ownerToken = token;
  const std::lock_guard<std::mutex> held(lock_);
  TerminalRecord& record = terminals_[terminal];
  if (!record.ownerToken.empty() && record.ownerToken != token) return false;
  record.owners.insert(session);
  record.ownerToken = std::move(ownerToken);
  return true;
}

void pxiRoutingAdaptorDevice::releaseTerminal(const pxiRoutingAdaptorSession* session,
                                              std::uint32_t terminal) {
  const std::lock_guard<std::mutex> held(lock_);
  TerminalRecord& record = terminals_[terminal];
  if (record.owners.erase(session) > 0 && record.owners.empty()) record.ownerToken.clear();
}

void pxiRoutingAdaptorDevice::addBusTerminals(const std::string& busName,
                                              const std::string& busType) {
  std::uint32_t line = 0;
  for (const char* name : groupOf(busType).names) {
    names_.add(name);
    TerminalRecord& record = terminals_.emplace_back();
    record.name = name;
    record.quotedName = telmar::quote(name);
    record.busType = busType;
    record.busLine = line++;
    record.busName = busName;
    record.canonicalName = name;
  }
}

}  // namespace varmex::nCorPxiRoutingAdaptor
