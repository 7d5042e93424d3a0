#ifndef SOURCE_VARMEX_SHAREDDESCRIPTION_H
#define SOURCE_VARMEX_SHAREDDESCRIPTION_H

#include <utility>

#include "source/varmex/DeviceMap.h"
#include "source/varmex/description.h"

namespace varmex {

// Both files as they were read.
struct tDescriptionTexts {
  tIniText pxiSys;
  tIniText pxieSys;
};

// What tells descriptions apart.
struct tDescriptionKey {
  tContentDigest pxiSys;
  tContentDigest pxieSys;

  bool operator==(const tDescriptionKey&) const = default;
};

// All that is worked out of the two files at once. Raises what the device map raises.
struct tLoadedDescription {
  tLoadedDescription(tDescriptionTexts texts, const tDescriptionKey& digests);

  const tDescriptionKey key;
  tDescription files;
  DeviceMap devices;

 private:
  tResult<> mapClassic();
  tResult<> mapExpress();
};

struct tDescriptionPlace;

// A use of a loaded description, which lives until its last use ends. Sessions of a process that
// read the same bytes use the same one, but for some that are opened in the very same moment.
//
// There is no lock: what the process shares stands in a table of fixed size whose places are taken
// and given up by single atomic steps. So a child made by fork in the middle of another thread's
// step goes on, and threads that run while the process ends or the library goes find nothing
// destroyed. With kMostShared descriptions in use at once, further ones are not shared.
class tDescriptionUse {
 public:
  static constexpr std::size_t kMostShared = 64;

  tDescriptionUse() = default;
  tDescriptionUse(tDescriptionUse&& other) noexcept { swap(other); }
  tDescriptionUse& operator=(tDescriptionUse&& other) noexcept {
    swap(other);
    return *this;
  }
  ~tDescriptionUse();

  // The description that a session opened now will probably use, none if there is none.
  static tDescriptionUse ofLatest();

  // The description that the texts say, loaded if none is in use. Raises what a load raises.
  static tDescriptionUse of(tDescriptionTexts texts);

  explicit operator bool() const { return loaded_ != nullptr; }
  const tLoadedDescription* operator->() const { return loaded_; }

 private:
  tDescriptionUse(const tLoadedDescription* loaded, tDescriptionPlace* place)
      : loaded_(loaded), place_(place) {}

  static tDescriptionUse find(const tDescriptionKey& key);
  static tDescriptionUse join(tDescriptionPlace& place);

  void publish();
  void swap(tDescriptionUse& other) {
    std::swap(loaded_, other.loaded_);
    std::swap(place_, other.place_);
  }

  const tLoadedDescription* loaded_ = nullptr;
  tDescriptionPlace* place_ = nullptr;  // null: not shared
};

}  // namespace varmex

#endif
