#ifndef SOURCE_OBSERVED_OBSERVED_H
#define SOURCE_OBSERVED_OBSERVED_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "varmex/varmex.h"

// The library's own model, in a copy of its own namespace whose reader tells what it reads.
namespace observed {

enum class tSource { pxiSys, pxieSys, registry };

enum class tWhat { section, item, key, value, subkey };

// One look-up of the model: of a section or a key, or of what stands in one.
struct tReading {
  tSource source;
  const void* file = nullptr;  // tells the files apart
  tWhat what;
  std::string section;  // or the key's path; empty where it is not there and was not named again
  std::string item;     // or the value's or the subkey's name; empty for sections and keys
  std::optional<std::string> text;  // nothing: absent; empty for sections, keys and subkeys
  std::uint32_t line = 0;  // from 1; 0 for what is absent, and where the registry is no text
};
using tReadings = std::vector<tReading>;

struct tWholeDescription {};
struct tChassisNumber {
  std::uint32_t chassis;
};
struct tSlotNumber {
  std::uint32_t chassis;
  std::uint32_t slot;
};
struct tBridgeNumber {
  std::uint32_t chassis;
  std::uint32_t bridge;
};
using tPlace =
    std::variant<tWholeDescription, tChassisNumber, tSlotNumber, tBridgeNumber, tDeviceAddress>;

using tValue = std::variant<std::uint32_t, std::string>;

// An item of the description as it stands, opened in a session of its own, so that nothing has been
// worked out before. One thread at a time.
class tItem {
 public:
  // What opening reads stands in `readings`; for a device that is also what the map of all devices
  // was made of. A failure is in `status`.
  tItem(const tPlace& place, tReadings& readings, tStatusRecord& status);
  tItem(const tItem&) = delete;
  tItem& operator=(const tItem&) = delete;
  ~tItem();

  // As the exported functions answer, with all that is read meanwhile, whatever the end. Nothing
  // when it fails, which is in `status`; throws std::out_of_range as they do.
  std::optional<tValue> ask(std::uint32_t attribute, bool isText, tReadings& readings,
                            tStatusRecord& status) const;

 private:
  struct tModel;
  std::unique_ptr<tModel> model_;
};

}  // namespace observed

#endif
