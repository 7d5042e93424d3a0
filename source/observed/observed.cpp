#include "source/observed/observed.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <deque>
#include <map>
#include <memory>

#include "corpxiTools/fileSystem/registryKey.h"
#include "corpxiTools/observer.h"
#include "source/varmex/Chassis.h"
#include "source/varmex/Device.h"
#include "source/varmex/Session.h"
#include "source/varmex/Slot.h"
#include "source/varmex/TriggerBridge.h"
#include "source/varmex/boundary.h"

namespace {

// Where what is observed goes; null for nothing.
observed::tReadings* readings = nullptr;

// Paths of the keys that are open, by what tells them apart.
std::map<const void*, std::string> keyPaths;

// The lines of a registry text, by where they begin.
struct tTextLines {
  std::vector<const char*> begins;
  const char* end;
};

// Those of the texts that were read last: look-ups in a row may be of several.
std::deque<tTextLines> textLines;
constexpr std::size_t kMostTexts = 8;

class tObservation {
 public:
  explicit tObservation(observed::tReadings& into) { readings = &into; }
  tObservation(const tObservation&) = delete;
  tObservation& operator=(const tObservation&) = delete;
  ~tObservation() {
    readings = nullptr;
    keyPaths.clear();
  }
};

// Which of the two files is which is told once they are loaded.
void nameFiles(observed::tReadings& of, const varmex::tDescription& description) {
  for (observed::tReading& reading : of) {
    if (reading.file == &description.pxiSys) reading.source = observed::tSource::pxiSys;
  }
}

std::string rootName(varmex::tRegistryRoot root) {
  switch (root) {
    case varmex::tRegistryRoot::localMachine: return "HKEY_LOCAL_MACHINE";
    case varmex::tRegistryRoot::classesRoot: return "HKEY_CLASSES_ROOT";
    case varmex::tRegistryRoot::currentUser: return "HKEY_CURRENT_USER";
    case varmex::tRegistryRoot::users: return "HKEY_USERS";
  }
  return "";
}

std::string viewName(varmex::tRegistryView view) {
  switch (view) {
    case varmex::tRegistryView::bits32: return " (32-bit view)";
    case varmex::tRegistryView::bits64: return " (64-bit view)";
    case varmex::tRegistryView::process: return "";
  }
  return "";
}

// A text up to its end, the texts of a list with commas between, a number in decimal, the bytes of
// anything else.
std::string textOf(std::uint32_t type, const char* data, std::uint32_t size) {
  std::string text(data, size);
  char part[16];
  switch (type) {
    case varmex::kRegistryText: return text.c_str();
    case varmex::kRegistryTextList:
      while (text.ends_with('\0')) text.pop_back();
      std::replace(text.begin(), text.end(), '\0', ',');
      return text;
    case varmex::kRegistryNumber: {
      std::uint32_t number = 0;
      std::memcpy(&number, data, std::min<std::size_t>(size, sizeof number));
      return std::to_string(number);
    }
    default: break;
  }
  std::string bytes;
  for (const char byte : text) {
    std::snprintf(part, sizeof part, "%02x ", static_cast<unsigned char>(byte));
    bytes += part;
  }
  if (!bytes.empty()) bytes.pop_back();
  return bytes;
}

void tell(observed::tReading reading) { readings->push_back(std::move(reading)); }

}  // namespace

namespace varmex::inline nCORPXITOOLS000 {

void observeSection(const tIniFile& file, std::string_view name, const tIniSection* found) {
  if (readings == nullptr) return;
  tell({.source = observed::tSource::pxieSys,
        .file = &file,
        .what = observed::tWhat::section,
        .section = std::string(name),
        .item = {},
        .text = found ? std::optional<std::string>("") : std::nullopt,
        .line = found ? found->line : 0});
}

void observeItem(const tIniFile& file, const tIniSection* section, std::string_view item,
                 const tIniItem* found) {
  if (readings == nullptr) return;
  tell({.source = observed::tSource::pxieSys,
        .file = &file,
        .what = observed::tWhat::item,
        .section = section ? std::string(section->nameView()) : std::string(),
        .item = std::string(item),
        .text = found ? std::optional<std::string>(found->value) : std::nullopt,
        .line = found ? found->line : 0});
}

// Behind the look-up, which does not know the section's name.
void observeMissing(const tIniFile&, const tIniPlace& place, std::string_view) {
  if (readings == nullptr || place.found != nullptr) return;
  const std::string parent = place.parent ? place.parent->name : "";
  readings->back().section = parent + std::string(std::string_view(place.name));
}

std::uint32_t observeKey(const void* key, tRegistryRoot root, const std::string& subkey,
                         tRegistryView view, std::uint32_t error) {
  if (readings == nullptr) return error;
  const std::string path = rootName(root) + '\\' + subkey + viewName(view);
  if (error == 0) keyPaths[key] = path;
  tell({.source = observed::tSource::registry,
        .what = observed::tWhat::key,
        .section = path,
        .item = {},
        .text = error == 0 ? std::optional<std::string>("") : std::nullopt});
  return error;
}

// Who asks for the size alone asks again.
std::uint32_t observeValue(const void* key, std::string_view name, std::uint32_t type,
                           const void* data, std::uint32_t size, std::uint32_t error) {
  if (readings == nullptr || (error == 0 && data == nullptr)) return error;
  tell({.source = observed::tSource::registry,
        .what = observed::tWhat::value,
        .section = keyPaths[key],
        .item = std::string(name),
        .text = error == 0 ? std::optional(textOf(type, static_cast<const char*>(data), size))
                           : std::nullopt});
  return error;
}

std::uint32_t observeSubkey(const void* key, const char* name, std::uint32_t error) {
  if (readings == nullptr || error != 0) return error;
  tell({.source = observed::tSource::registry,
        .what = observed::tWhat::subkey,
        .section = keyPaths[key],
        .item = name,
        .text = ""});
  return error;
}

void observeText(std::string_view text) {
  tTextLines lines{{}, text.data() + text.size()};
  for (std::size_t begin = 0; begin < text.size();) {
    lines.begins.push_back(text.data() + begin);
    begin = std::min(text.find('\n', begin), text.size() - 1) + 1;
  }
  textLines.push_front(std::move(lines));
  if (textLines.size() > kMostTexts) textLines.pop_back();
}

// What was not told, as the question for a size, changes nothing of what was told ahead of it.
void observePlace(const char* place) {
  if (readings == nullptr || readings->empty() || place == nullptr) return;
  observed::tReading& reading = readings->back();
  const bool isNew = reading.source == observed::tSource::registry && reading.line == 0;
  if (!isNew || !reading.text) return;
  for (const auto& [begins, end] : textLines) {
    if (begins.empty() || place < begins.front() || place >= end) continue;
    const auto behind = std::upper_bound(begins.begin(), begins.end(), place);
    reading.line = static_cast<std::uint32_t>(behind - begins.begin());
    return;
  }
}

}  // namespace varmex::inline nCORPXITOOLS000

namespace observed {

namespace {

using varmex::tResult;
using tOpened = std::shared_ptr<const varmex::Item>;

template <class Item>
tResult<tOpened> made(const tResult<typename Item::tPlace>& place) {
  if (!place) return place.refusal();
  return tOpened(std::make_shared<Item>(*place));
}

struct tOpener {
  const varmex::Session& session;

  // Owned by the model.
  tResult<tOpened> operator()(const tWholeDescription&) const {
    return tOpened(tOpened(), &session);
  }
  tResult<tOpened> operator()(const tChassisNumber& of) const {
    return made<varmex::Chassis>(varmex::Chassis::find(of.chassis, session.description()));
  }
  tResult<tOpened> operator()(const tSlotNumber& of) const {
    return made<varmex::Slot>(varmex::Slot::find(of.chassis, of.slot, session.description()));
  }
  tResult<tOpened> operator()(const tBridgeNumber& of) const {
    return made<varmex::TriggerBridge>(
        varmex::TriggerBridge::find(of.chassis, of.bridge, session.description()));
  }
  tResult<tOpened> operator()(const tDeviceAddress& address) const {
    auto device = session.openDevice(address);
    if (!device) return device.refusal();
    return tOpened(std::move(*device));
  }
};

tResult<std::optional<tValue>> asked(const varmex::Item& item, std::uint32_t attribute,
                                     bool isText) {
  if (isText) {
    const auto text = item.getStringAttribute(attribute);
    if (!text) return text.refusal();
    return std::optional<tValue>(std::string(*text));
  }
  const auto number = item.getU32Attribute(attribute);
  if (!number) return number.refusal();
  return std::optional<tValue>(*number);
}

}  // namespace

struct tItem::tModel {
  varmex::Session session;
  tOpened item;
};

// Devices are found in a map that loading makes, which for other items counts for nothing. A
// refusal refers to texts of the description, so the session outlives its telling.
tItem::tItem(const tPlace& place, tReadings& into, tStatusRecord& status) {
  varmex::callInsideBoundary(&status, OSTREL_HERE, [&]() -> tResult<bool> {
    const tObservation observation(into);
    model_ = std::make_unique<tModel>();
    if (!std::holds_alternative<tDeviceAddress>(place)) into.clear();
    auto item = std::visit(tOpener{model_->session}, place);
    nameFiles(into, model_->session.description());
    if (!item) return item.refusal();
    model_->item = std::move(*item);
    return true;
  });
}

tItem::~tItem() = default;

std::optional<tValue> tItem::ask(std::uint32_t attribute, bool isText, tReadings& into,
                                 tStatusRecord& status) const {
  const auto finish = [&](tReadings* of) { nameFiles(*of, model_->session.description()); };
  const std::unique_ptr<tReadings, decltype(finish)> named(&into, finish);
  const tObservation observation(into);
  return varmex::callInsideBoundary(&status, OSTREL_HERE,
                                    [&] { return asked(*model_->item, attribute, isText); });
}

}  // namespace observed
