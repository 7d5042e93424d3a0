#include "pxiRoutingAdaptor/pxiRoutingAdaptorDevice.h"

#include <span>

#include "telmar/TelmarUtils.h"
#include "varmex/varmex.h"

namespace varmex::nCorPxiRoutingAdaptor {

namespace {

struct tLineGroup {
  std::string_view busType;
  std::span<const char* const> names;
};

constexpr const char* kTriggerNames[] = {"PXI_Trig0", "PXI_Trig1", "PXI_Trig2", "PXI_Trig3",
                                         "PXI_Trig4", "PXI_Trig5", "PXI_Trig6", "PXI_Trig7"};
constexpr const char* kStarNames[] = {"PXI_Star"};
constexpr const char* kDStarNames[] = {"PXIe_DStarA", "PXIe_DStarB", "PXIe_DStarC"};

constexpr tLineGroup kGroups[] = {
    {"PXI_Trig", kTriggerNames},
    {"PXI_Star", kStarNames},
    {"PXIe_DStar", kDStarNames},
};

const tLineGroup& groupOf(const std::string& busType) {
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
  const tLineGroup& group = groupOf(busType);
  const tReplaceableName sharedName(busNames_.emplace_front(busName));
  std::uint32_t line = 0;
  for (const char* name : group.names) {
    names_.add(name);
    terminals_.push_back({.name = name,
                          .quotedName = telmar::quote(name),
                          .busType = busType,
                          .busLine = line++,
                          .busName = sharedName,
                          .canonicalName = name});
  }
}

void pxiRoutingAdaptorDevice::takeBusNames(const pxiRoutingAdaptorDevice& other) {
  if (other.terminals_.size() != terminals_.size()) return;
  for (std::size_t row = 0; row < terminals_.size(); ++row) {
    terminals_[row].busName.replace(busNames_.emplace_front(other.terminals_[row].busName.c_str()));
  }
}

}  // namespace varmex::nCorPxiRoutingAdaptor
