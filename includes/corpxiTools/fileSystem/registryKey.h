#ifndef CORPXITOOLS_FILESYSTEM_REGISTRYKEY_H
#define CORPXITOOLS_FILESYSTEM_REGISTRYKEY_H

#include <cstdint>
#include <memory>
#include <string>

namespace varmex::inline nCORPXITOOLS000 {

enum class tRegistryRoot { localMachine, classesRoot, currentUser, users };

enum class tRegistryView { bits32, bits64, process };

inline constexpr std::uint32_t kRegistryText = 1;
inline constexpr std::uint32_t kRegistryNumber = 4;
inline constexpr std::uint32_t kRegistryTextList = 7;

// An open key, read-only, closed at the end. Every operation answers 0 or the system's error
// number. Texts are in the process's narrow encoding, names compare without regard to case
// (of ASCII letters alone where the registry is a text).
class tRegistryKey {
 public:
  tRegistryKey();
  tRegistryKey(tRegistryKey&&) noexcept;
  ~tRegistryKey();

  // An empty `subkey` opens the root itself. A key that was open before is closed.
  std::uint32_t open(tRegistryRoot root, const std::string& subkey, tRegistryView view);
  bool isOpen() const;

  // On entry `size` is the size of `data` in bytes, on return that of the value, terminators as
  // stored. A value that does not fit is an error; a null `data` asks for the size alone.
  std::uint32_t queryValue(const char* name, std::uint32_t& type, void* data,
                           std::uint32_t& size) const;

  // Value and subkey number `index` of the key. `nameSize` and `size` as for queryValue, the name
  // NUL-terminated. Any error ends an enumeration.
  std::uint32_t enumValue(std::uint32_t index, char* name, std::uint32_t nameSize,
                          std::uint32_t& type, void* data, std::uint32_t& size) const;
  std::uint32_t enumKey(std::uint32_t index, char* name, std::uint32_t nameSize) const;

 private:
  struct tNative;
  std::unique_ptr<tNative> native_;
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
