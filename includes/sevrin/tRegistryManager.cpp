#include "sevrin/tRegistryManager.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <new>
#include <optional>

#include "ostrel/quarks/numbers.h"

namespace varmex::inline nSEVRIN000 {

namespace {

constexpr std::uint32_t kValueNameSize = 16384;
constexpr std::uint32_t kValueDataSize = 16301;
constexpr std::uint32_t kChildNameSize = 256;

struct tRoot {
  const char* name;
  tRegistryRoot root;
};

constexpr tRoot kRoots[] = {{"HKEY_LOCAL_MACHINE", tRegistryRoot::localMachine},
                            {"HKEY_CLASSES_ROOT", tRegistryRoot::classesRoot},
                            {"HKEY_CURRENT_USER", tRegistryRoot::currentUser},
                            {"HKEY_USERS", tRegistryRoot::users}};

std::optional<tRegistryRoot> findRoot(const std::string& name) {
  for (const tRoot& root : kRoots) {
    if (name == root.name) return root.root;
  }
  return std::nullopt;
}

std::string dumpBytes(const char* data, std::uint32_t size) {
  std::string text;
  text.reserve(std::size_t{size} * 3);
  char part[4];
  for (std::uint32_t n = 0; n < size; ++n) {
    std::snprintf(part, sizeof part, "%02x ", static_cast<unsigned char>(data[n]));
    text += part;
  }
  return text;
}

tDataTreeAttribute numberAttribute(std::uint32_t number) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", number);
  return {tDataTreeAttribute::kNumber, text, number};
}

// A text that reads as a number as a whole is one too.
tDataTreeAttribute textAttribute(std::string text) {
  const tUnsignedText number = readUnsignedBase0(text.c_str());
  const bool isNumber = !text.empty() && number.end == text.c_str() + text.size();
  if (!isNumber) return {tDataTreeAttribute::kText, std::move(text), 0};
  return {tDataTreeAttribute::kNumber, std::move(text), number.value};
}

// Where one value after the other is read to. Nothing is cleared in between: a number that is
// stored with too few bytes goes on in what stood there before.
struct tValueBuffers {
  std::array<char, kValueNameSize> name{};
  std::array<char, kValueDataSize> data{};
};

tDataTreeAttribute render(std::uint32_t type, const tValueBuffers& buffers, std::uint32_t size) {
  const auto& data = buffers.data;
  switch (type) {
    case kRegistryText:
      return textAttribute({data.begin(), std::find(data.begin(), data.begin() + size, '\0')});
    case kRegistryNumber: {
      std::uint32_t number = 0;
      std::memcpy(&number, data.data(), sizeof number);
      return numberAttribute(number);
    }
    case kRegistryTextList: return textAttribute({data.data(), size});
    default: return textAttribute(dumpBytes(data.data(), size));
  }
}

}  // namespace

class tRegistryManager::tRegHandlerRegistration : public iHandlerRegistration {
 public:
  tRegHandlerRegistration(const char* scheme, tRegistryView view)
      : iHandlerRegistration(scheme), view_(view) {}

  tDataTreeManagerPtr createManager(const std::string& path, tStatusRecord& status) override {
    return create(path, view_, status);
  }

 private:
  tRegistryView view_;
};

tUntilUnload<tRegistryManager::tRegHandlerRegistration> tRegistryManager::ownView_(
    "reg://", tRegistryView::process);
tUntilUnload<tRegistryManager::tRegHandlerRegistration> tRegistryManager::view32_(
    "reg32://", tRegistryView::bits32);
tUntilUnload<tRegistryManager::tRegHandlerRegistration> tRegistryManager::view64_(
    "reg64://", tRegistryView::bits64);

tDataTreeManagerPtr tRegistryManager::create(const std::string& path, tRegistryView view,
                                             tStatusRecord& status) {
  auto* const manager = new (std::nothrow) tRegistryManager(view);
  tDataTreeManagerPtr owned(manager);
  if (!manager) {
    tFailure(kDataTreeMemoryFull, OSTREL_HERE).reportTo(status);
    return nullptr;
  }
  manager->open(path, status);
  if (isFailure(status)) return nullptr;
  return owned;
}

void tRegistryManager::open(const std::string& path, tStatusRecord& status) {
  path_ = path;
  const std::size_t end = std::min(path.find('\\'), path.size());
  const std::string rootName = path.substr(0, end);
  const auto root = findRoot(rootName);
  if (!root) {
    tFailure(kStatusFileOpenFault, OSTREL_HERE)
        .open("sevrin_debug")
        .text("rootString", rootName)
        .reportTo(status);
    return;
  }
  const std::string subkey = end == path.size() ? std::string() : path.substr(end + 1);
  if (const std::uint32_t error = key_.open(*root, subkey, view_)) {
    tFailure(kStatusFileOpenFault, OSTREL_HERE)
        .systemError(describeSystemError(error))
        .reportTo(status);
    return;
  }
  readAttributes();
}

// A value that is too long for the buffers ends the reading: those behind it are not there.
void tRegistryManager::readAttributes() {
  const auto buffers = std::make_unique<tValueBuffers>();
  for (std::uint32_t index = 0;; ++index) {
    std::uint32_t type = 0;
    std::uint32_t size = kValueDataSize;
    const std::uint32_t error = key_.enumValue(index, buffers->name.data(), kValueNameSize, type,
                                               buffers->data.data(), size);
    if (error != 0) return;
    attributes_[buffers->name.data()] = render(type, *buffers, std::min(size, kValueDataSize));
  }
}

tDataTreeAttribute tRegistryManager::getAttribute(const std::string& name,
                                                  tStatusRecord& status) const {
  if (isFailure(status)) return {};
  const auto found = attributes_.find(name);
  if (found != attributes_.end()) return found->second;
  tFailure(kStatusAttributeNotFound, OSTREL_HERE)
      .open("sevrin_debug")
      .text("attributeName", name)
      .reportTo(status);
  return {};
}

tDataTreeManagerPtr tRegistryManager::getChild(const std::string& name,
                                               tStatusRecord& status) const {
  if (isFailure(status)) return nullptr;
  const std::string path = path_ + '\\' + name;
  auto child = create(path, view_, status);
  if (status.code != kStatusFileOpenFault.value) return child;
  // What the system said of the missing key is dropped.
  status.code = 0;
  statusSetText(status, nullptr);
  tFailure(kStatusChildNotFound, OSTREL_HERE)
      .open("sevrin_debug")
      .text("childKey", path)
      .reportTo(status);
  return nullptr;
}

std::vector<std::string> tRegistryManager::getChildNames(tStatusRecord& status) const {
  std::vector<std::string> names;
  if (isFailure(status)) return names;
  std::array<char, kChildNameSize> name;
  for (std::uint32_t index = 0; key_.enumKey(index, name.data(), kChildNameSize) == 0; ++index) {
    names.emplace_back(name.data());
  }
  return names;
}

std::vector<std::string> tRegistryManager::getAttributeNames(tStatusRecord& status) const {
  std::vector<std::string> names;
  if (isFailure(status)) return names;
  for (const auto& [name, attribute] : attributes_) names.push_back(name);
  return names;
}

}  // namespace varmex::inline nSEVRIN000
