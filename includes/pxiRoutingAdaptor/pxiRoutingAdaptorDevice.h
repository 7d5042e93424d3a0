#ifndef PXIROUTINGADAPTOR_PXIROUTINGADAPTORDEVICE_H
#define PXIROUTINGADAPTOR_PXIROUTINGADAPTORDEVICE_H

#include <atomic>
#include <cstdint>
#include <forward_list>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "ostrel/quarks/failure.h"
#include "ostrel/quarks/forkProofLock.h"
#include "telmar/TerminalNames.h"

namespace varmex::nCorPxiRoutingAdaptor {

class pxiRoutingAdaptorSession;

// A name that another may take the place of while threads read it. The texts are the device's.
class tReplaceableName {
 public:
  explicit tReplaceableName(const std::string& name) : name_(&name) {}
  tReplaceableName(const tReplaceableName& other) : name_(other.name_.load()) {}
  tReplaceableName& operator=(const tReplaceableName&) = delete;

  const char* c_str() const { return name_.load()->c_str(); }
  void replace(const std::string& name) { name_ = &name; }

 private:
  std::atomic<const std::string*> name_;
};

// A trigger line that a module can reach. All but the name of its bus and the last three fields are
// constant once the table stands.
struct TerminalRecord {
  std::string name;
  std::string quotedName;  // as a JSON string
  bool isExternal = true;
  bool isOwned = false;
  std::string visibility = "public";
  std::string busType;
  std::uint32_t busLine = 0;  // position in its group
  tReplaceableName busName;
  bool isAlias = false;
  std::string canonicalName;
  bool isMaskedOut = false;
  // Who holds it. The pointers are keys only and never followed: a dead session stays among them.
  std::set<const pxiRoutingAdaptorSession*> owners{};
  std::string ownerToken{};  // empty when free
  bool isHeld = false;       // under such a token, to be read without the lock
};

// One module's terminals and their holders, shared by all sessions of the process that name it.
class pxiRoutingAdaptorDevice {
 public:
  pxiRoutingAdaptorDevice() = default;
  pxiRoutingAdaptorDevice(const pxiRoutingAdaptorDevice&) = delete;
  pxiRoutingAdaptorDevice& operator=(const pxiRoutingAdaptorDevice&) = delete;
  virtual ~pxiRoutingAdaptorDevice() = default;

  // Fills the table; called once, before anybody else knows the device.
  virtual void loadTerminals(const std::string& deviceName) = 0;

  // Takes the names of the buses from a device of the same table. Texts that were given out live
  // on.
  void takeBusNames(const pxiRoutingAdaptorDevice& other);

  const std::vector<TerminalRecord>& terminals() const { return terminals_; }
  const telmar::TerminalNames& names() const { return names_; }

  // Keeps the owners as they are while it lives. In the child of a fork, the terminal that a thread
  // of the parent was just reserving or releasing is free.
  class tOwnersLock {
   public:
    explicit tOwnersLock(pxiRoutingAdaptorDevice& device);

   private:
    tForkProofLock::tHeld held_;
  };

  // Whether the terminal is free or held under `token`. To find a free one takes no lock.
  bool isAvailable(std::uint32_t terminal, std::string_view token) {
    return !std::atomic_ref(terminals_[terminal].isHeld).load(std::memory_order_relaxed) ||
           isSharedUnder(terminal, token);
  }

  // False when the terminal is held under another token; whoever comes with the same one shares it.
  bool reserveTerminal(const pxiRoutingAdaptorSession* session, const std::string& token,
                       std::uint32_t terminal);

  // Free again once the last holder has left. A session that holds nothing changes nothing.
  void releaseTerminal(const pxiRoutingAdaptorSession* session, std::uint32_t terminal);

 protected:
  // Appends the lines of one group: "PXI_Trig", "PXI_Star" or "PXIe_DStar".
  void addBusTerminals(const std::string& busName, const std::string& busType);

 private:
  bool isSharedUnder(std::uint32_t terminal, std::string_view token);

  std::vector<TerminalRecord> terminals_;
  std::forward_list<std::string> busNames_;
  telmar::TerminalNames names_;
  tForkProofLock lock_;  // of owners, ownerToken and isHeld
  // Whose owners are being changed; null otherwise.
  std::atomic<TerminalRecord*> changing_{nullptr};
};

inline constexpr tErrorCode kRoutingFault{-313328, "(-313300-28)"};

// The device of that name ("BUS.DEVICE.FUNCTION:MASK"), made at its first use. It lives as long as
// the library. If the registry could not be read just then, the next use looks for the names of its
// buses again.
pxiRoutingAdaptorDevice* getRoutingDevice(const std::string& deviceName);

}  // namespace varmex::nCorPxiRoutingAdaptor

#endif
