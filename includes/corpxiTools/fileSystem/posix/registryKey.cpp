#include "corpxiTools/fileSystem/registryKey.h"

#include <cerrno>
#include <cstring>

#include "corpxiTools/fileSystem/posix/registryFile.h"
#include "corpxiTools/fileSystem/posix/registryNames.h"
#include "corpxiTools/observer.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

const char* rootName(tRegistryRoot root) {
  switch (root) {
    case tRegistryRoot::localMachine: return "HKEY_LOCAL_MACHINE";
    case tRegistryRoot::classesRoot: return "HKEY_CLASSES_ROOT";
    case tRegistryRoot::currentUser: return "HKEY_CURRENT_USER";
    case tRegistryRoot::users: return "HKEY_USERS";
  }
  return "";
}

// The 32-bit view of the machine's software lies in a key of its own.
std::string subkeyInView(tRegistryRoot root, const std::string& subkey, tRegistryView view) {
  constexpr std::string_view kSoftware = "SOFTWARE";
  constexpr std::string_view kView32 = "WOW6432Node";
  const auto below = [&subkey](std::size_t start) {
    return std::string_view(subkey).substr(start, subkey.find('\\', start) - start);
  };
  if (view != tRegistryView::bits32 || root != tRegistryRoot::localMachine) return subkey;
  if (!sameRegistryName(below(0), kSoftware)) return subkey;
  if (subkey.size() == kSoftware.size()) return subkey + '\\' + std::string(kView32);
  const std::size_t rest = kSoftware.size() + 1;
  if (sameRegistryName(below(rest), kView32)) return subkey;
  return subkey.substr(0, rest) + std::string(kView32) + '\\' + subkey.substr(rest);
}

// Between keys any number of backslashes counts as one, but not directly below a root.
std::string withoutRepeatedBackslashes(const std::string& subkey) {
  std::string result;
  for (const char byte : subkey) {
    const bool isRepeated = byte == '\\' && result.size() > 1 && result.back() == '\\';
    if (!isRepeated) result += byte;
  }
  return result;
}

std::uint32_t copyName(std::string_view source, char* name, std::uint32_t nameSize) {
  if (source.size() >= nameSize) return E2BIG;
  name[source.copy(name, source.size())] = '\0';
  return 0;
}

// A text that was stored without its end gets one where there is room, as a registry does it.
std::uint32_t copyValue(const tRegistryTextValue& value, std::uint32_t& type, void* data,
                        std::uint32_t& size) {
  const auto needed = static_cast<std::uint32_t>(value.data.size());
  const std::uint32_t room = data ? size : needed;
  type = value.type;
  size = needed;
  if (needed > room) return E2BIG;
  if (!data) return 0;
  std::memcpy(data, value.data.data(), needed);
  if (needed < room && value.type == kRegistryText) static_cast<char*>(data)[needed] = '\0';
  return 0;
}

}  // namespace

struct tRegistryKey::tNative {
  std::string path;
  std::shared_ptr<const tRegistryText> text;  // null: there is none
  tRegistryTextKey key;
  struct {
    std::shared_ptr<const tRegistryText> text;
    std::vector<std::string_view> subkeys;
  } listing;  // of the running enumeration
};

tRegistryKey::tRegistryKey() = default;
tRegistryKey::tRegistryKey(tRegistryKey&&) noexcept = default;
tRegistryKey::~tRegistryKey() = default;

std::uint32_t tRegistryKey::open(tRegistryRoot root, const std::string& subkey,
                                 tRegistryView view) {
  native_.reset();
  auto native = std::make_unique<tNative>();
  std::string& path = native->path = rootName(root);
  if (!subkey.empty()) {
    path += '\\' + withoutRepeatedBackslashes(subkeyInView(root, subkey, view));
  }
  while (path.ends_with('\\')) path.pop_back();
  // Statements of their own leave the code without an observer the same to the instruction.
  if (const std::uint32_t error = readRegistry(native->text)) {
    observeKey(nullptr, root, subkey, view, error);
    return error;
  }
  const auto key = native->text ? native->text->findKey(path) : std::nullopt;
  // The roots are always there.
  if (!key && !subkey.empty()) {
    observeKey(nullptr, root, subkey, view, ENOENT);
    return ENOENT;
  }
  if (key) native->key = *key;
  native_ = std::move(native);
  observeKey(native_.get(), root, subkey, view, 0);
  observePlaceBy([&] { return native_->text ? native_->text->headerOf(path).data() : nullptr; });
  return 0;
}

bool tRegistryKey::isOpen() const { return native_ != nullptr; }

std::uint32_t tRegistryKey::queryValue(const char* name, std::uint32_t& type, void* data,
                                       std::uint32_t& size) const {
  const tRegistryTextValue* const value = native_->key.find(name);
  const std::uint32_t error = value ? copyValue(*value, type, data, size) : ENOENT;
  observeValue(native_.get(), name, type, data, size, error);
  observePlaceBy([&] { return value ? value->data.data() : nullptr; });
  return error;
}

std::uint32_t tRegistryKey::enumValue(std::uint32_t index, char* name, std::uint32_t nameSize,
                                      std::uint32_t& type, void* data, std::uint32_t& size) const {
  const auto values = native_->key.values();
  if (index >= values.size()) return ENOENT;
  if (const std::uint32_t error = copyName(values[index].name, name, nameSize)) return error;
  const std::uint32_t error = copyValue(values[index], type, data, size);
  observeValue(native_.get(), values[index].name, type, data, size, error);
  observePlaceBy([&] { return values[index].data.data(); });
  return error;
}

// The subkeys are those of the moment when an enumeration begins.
std::uint32_t tRegistryKey::enumKey(std::uint32_t index, char* name, std::uint32_t nameSize) const {
  auto& [listed, subkeys] = native_->listing;
  if (index == 0) {
    subkeys.clear();
    if (const std::uint32_t error = readRegistry(listed)) return error;
    if (listed) subkeys = listed->subkeys(native_->path);
  }
  const std::uint32_t error =
      index < subkeys.size() ? copyName(subkeys[index], name, nameSize) : ENOENT;
  observeSubkey(native_.get(), name, error);
  observePlaceBy([&, &names = subkeys] { return error == 0 ? names[index].data() : nullptr; });
  return error;
}

}  // namespace varmex::inline nCORPXITOOLS000
