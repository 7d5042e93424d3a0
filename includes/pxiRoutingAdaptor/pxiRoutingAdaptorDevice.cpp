#include "pxiRoutingAdaptor/pxiRoutingAdaptorDevice.h"

#include <memory>
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

void publish(TerminalRecord& record) {
  std::atomic_ref(record.isHeld).store(!record.ownerToken.empty(), std::memory_order_relaxed);
}

// Notes what is being changed, and publishes what came of it.
class tChange {
 public:
  tChange(std::atomic<TerminalRecord*>& note, TerminalRecord& record)
      : note_(note), record_(record) {
    note_ = &record;
  }
  tChange(const tChange&) = delete;
  tChange& operator=(const tChange&) = delete;
  ~tChange() {
    publish(record_);
    note_ = nullptr;
  }

 private:
  std::atomic<TerminalRecord*>& note_;
  TerminalRecord& record_;
};

}  // namespace

pxiRoutingAdaptorDevice::tOwnersLock::tOwnersLock(pxiRoutingAdaptorDevice& device)
    : held_(device.lock_) {
  TerminalRecord* const broken = device.changing_;
  if (!broken) return;
  std::construct_at(&broken->owners);
  std::construct_at(&broken->ownerToken);
  publish(*broken);
  device.changing_ = nullptr;
}

bool pxiRoutingAdaptorDevice::isSharedUnder(std::uint32_t terminal, std::string_view token) {
  const tOwnersLock held(*this);
  const std::string& owner = terminals_[terminal].ownerToken;
  return owner.empty() || owner == token;
}

bool pxiRoutingAdaptorDevice::reserveTerminal(const pxiRoutingAdaptorSession* session,
                                              const std::string& token, std::uint32_t terminal) {
  std::string ownerToken = token;
  const tOwnersLock held(*this);
  TerminalRecord& record = terminals_[terminal];
  if (!record.ownerToken.empty() && record.ownerToken != token) return false;
  const tChange change(changing_, record);
  record.owners.insert(session);
  record.ownerToken = std::move(ownerToken);
  return true;
}

void pxiRoutingAdaptorDevice::releaseTerminal(const pxiRoutingAdaptorSession* session,
                                              std::uint32_t terminal) {
  const tOwnersLock held(*this);
  TerminalRecord& record = terminals_[terminal];
  const tChange change(changing_, record);
  // A long token's memory is not kept.
  if (record.owners.erase(session) > 0 && record.owners.empty()) {
    std::string().swap(record.ownerToken);
  }
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
