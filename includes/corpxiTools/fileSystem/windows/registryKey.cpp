#include "corpxiTools/fileSystem/registryKey.h"

#include <windows.h>

#include "corpxiTools/observer.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

HKEY rootHandle(tRegistryRoot root) {
  switch (root) {
    case tRegistryRoot::localMachine: return HKEY_LOCAL_MACHINE;
    case tRegistryRoot::classesRoot: return HKEY_CLASSES_ROOT;
    case tRegistryRoot::currentUser: return HKEY_CURRENT_USER;
    case tRegistryRoot::users: return HKEY_USERS;
  }
  return nullptr;
}

REGSAM accessMask(tRegistryView view) {
  switch (view) {
    case tRegistryView::bits32: return KEY_READ | KEY_WOW64_32KEY;
    case tRegistryView::bits64: return KEY_READ | KEY_WOW64_64KEY;
    case tRegistryView::process: return KEY_READ;
  }
  return KEY_READ;
}

std::uint32_t asError(LSTATUS status) { return static_cast<std::uint32_t>(status); }

}  // namespace

struct tRegistryKey::tNative {
  tNative() = default;
  tNative(const tNative&) = delete;
  tNative& operator=(const tNative&) = delete;
  ~tNative() {
    if (handle) RegCloseKey(handle);
  }
  HKEY handle = nullptr;
};

tRegistryKey::tRegistryKey() = default;
tRegistryKey::tRegistryKey(tRegistryKey&&) noexcept = default;
tRegistryKey::~tRegistryKey() = default;

std::uint32_t tRegistryKey::open(tRegistryRoot root, const std::string& subkey,
                                 tRegistryView view) {
  native_.reset();
  auto native = std::make_unique<tNative>();
  const LSTATUS status =
      RegOpenKeyExA(rootHandle(root), subkey.c_str(), 0, accessMask(view), &native->handle);
  if (status == ERROR_SUCCESS) native_ = std::move(native);
  return observeKey(native_.get(), root, subkey, view, asError(status));
}

bool tRegistryKey::isOpen() const { return native_ != nullptr; }

std::uint32_t tRegistryKey::queryValue(const char* name, std::uint32_t& type, void* data,
                                       std::uint32_t& size) const {
  DWORD nativeType = 0;
  DWORD nativeSize = size;
  const LSTATUS status = RegQueryValueExA(native_->handle, name, nullptr, &nativeType,
                                          static_cast<BYTE*>(data), &nativeSize);
  type = nativeType;
  size = nativeSize;
  return observeValue(native_.get(), name, type, data, size, asError(status));
}

std::uint32_t tRegistryKey::enumValue(std::uint32_t index, char* name, std::uint32_t nameSize,
                                      std::uint32_t& type, void* data, std::uint32_t& size) const {
  DWORD nativeType = 0;
  DWORD nativeNameSize = nameSize;
  DWORD nativeSize = size;
  const LSTATUS status = RegEnumValueA(native_->handle, index, name, &nativeNameSize, nullptr,
                                       &nativeType, static_cast<BYTE*>(data), &nativeSize);
  type = nativeType;
  size = nativeSize;
  if (status != ERROR_SUCCESS) return asError(status);
  return observeValue(native_.get(), name, type, data, size, asError(status));
}

std::uint32_t tRegistryKey::enumKey(std::uint32_t index, char* name, std::uint32_t nameSize) const {
  DWORD nativeNameSize = nameSize;
  const LSTATUS status = RegEnumKeyExA(native_->handle, index, name, &nativeNameSize, nullptr,
                                       nullptr, nullptr, nullptr);
  if (status != ERROR_SUCCESS) return asError(status);
  return observeSubkey(native_.get(), name, asError(status));
}

}  // namespace varmex::inline nCORPXITOOLS000
