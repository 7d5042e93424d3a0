#include "tools/varmex/machine/pciTree.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <tuple>

#include "corpxiTools/fileSystem/inputFile.h"

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostDevices = 10000;
constexpr std::size_t kMostText = 256;

// Files of a device that are taken as they stand.
constexpr const char* kFiles[] = {"vendor",
                                  "device",
                                  "class",
                                  "current_link_speed",
                                  "current_link_width",
                                  "max_link_speed",
                                  "max_link_width",
                                  "secondary_bus_number",
                                  "subordinate_bus_number"};

// The first bytes of a file, or of its first line.
std::string readBytes(const fs::path& path, std::size_t most) {
  varmex::tInputFile file(path.string().c_str());
  std::string bytes(most, '\0');
  const std::int64_t size = file.isOpen() ? file.read(bytes.data(), most) : 0;
  bytes.resize(static_cast<std::size_t>(std::max<std::int64_t>(size, 0)));
  return bytes;
}

bool isPlain(const std::string& text) {
  return text.size() <= kMostText && std::all_of(text.begin(), text.end(), [](char byte) {
           return byte >= ' ' && byte <= '~';
         });
}

// The number in hexadecimal at the front of a text, and what is behind it and a mark.
std::optional<std::uint32_t> takeHex(std::string_view& text, char mark) {
  std::uint32_t number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
  if (mark == '\0') return text.empty() ? std::optional(number) : std::nullopt;
  if (text.empty() || text.front() != mark) return std::nullopt;
  text.remove_prefix(1);
  return number;
}

// "0000:05:00.0"
std::optional<tPciDevice::tAddress> addressOf(std::string_view text) {
  const auto domain = takeHex(text, ':');
  const auto bus = domain ? takeHex(text, ':') : std::nullopt;
  const auto device = bus ? takeHex(text, '.') : std::nullopt;
  const auto function = device ? takeHex(text, '\0') : std::nullopt;
  if (!function || *bus > 255 || *device > 31 || *function > 7) return std::nullopt;
  return tPciDevice::tAddress{*domain, *bus, *device, *function};
}

std::string textOf(const tPciDevice::tAddress& address) {
  char text[32];
  std::snprintf(text, sizeof text, "%04x:%02x:%02x.%x", address.domain, address.bus, address.device,
                address.function);
  return text;
}

// The name behind "DRIVER=" in what the system tells of events.
std::string driverIn(const std::string& events) {
  const std::string mark = "DRIVER=";
  const std::size_t begin =
      events.starts_with(mark) ? 0 : std::min(events.find('\n' + mark), events.size() - 1) + 1;
  if (begin >= events.size()) return {};
  const std::size_t name = begin + mark.size();
  return events.substr(name, events.find('\n', name) - name);
}

// Older systems do not tell the bus behind a bridge but in its registers.
void addBusOfRegisters(const fs::path& folder, tPciDevice& device) {
  constexpr std::size_t kSecondaryBus = 0x19;
  if (!device.isBridge() || device.texts.contains("secondary_bus_number")) return;
  const std::string registers = readBytes(folder / "config", kSecondaryBus + 1);
  if (registers.size() <= kSecondaryBus) return;
  device.texts["secondary_bus_number"] =
      std::to_string(static_cast<unsigned char>(registers[kSecondaryBus]));
}

tPciDevice readDevice(const fs::path& folder, const tPciDevice::tAddress& address) {
  tPciDevice device{address, {}};
  for (const char* const name : kFiles) {
    std::string text = readBytes(folder / name, kMostText);
    text.erase(std::min(text.find('\n'), text.size()));
    if (!text.empty() && isPlain(text)) device.texts[name] = text;
  }
  const std::string driver = driverIn(readBytes(folder / "uevent", 4096));
  if (!driver.empty() && isPlain(driver)) device.texts["driver"] = driver;
  addBusOfRegisters(folder, device);
  return device;
}

}  // namespace

std::string tPciDevice::text(const std::string& name) const {
  const auto found = texts.find(name);
  return found == texts.end() ? "" : found->second;
}

std::optional<std::uint32_t> tPciDevice::number(const std::string& name) const {
  const std::string value = text(name);
  const bool isHex = value.starts_with("0x");
  std::uint32_t number = 0;
  const char* const end = value.data() + value.size();
  const auto [stop, error] =
      std::from_chars(value.data() + (isHex ? 2 : 0), end, number, isHex ? 16 : 10);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<double> tPciDevice::speed(const std::string& name) const {
  const std::string value = text(name);
  double number = 0;
  const auto [stop, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  return error == std::errc() && number > 0 ? std::optional(number) : std::nullopt;
}

bool tPciDevice::isBridge() const {
  constexpr std::uint32_t kBridge = 0x0604;
  return number("class").value_or(0) >> 8 == kBridge;
}

tPciTree::tPciTree(std::vector<tPciDevice> devices) : devices_(std::move(devices)) {
  std::sort(devices_.begin(), devices_.end(),
            [](const auto& a, const auto& b) { return a.address < b.address; });
  for (std::size_t n = 0; n < devices_.size(); ++n) {
    const auto bus = devices_[n].isBridge() ? devices_[n].number("secondary_bus_number") : 0;
    if (bus.value_or(0) != 0) bridges_.try_emplace({devices_[n].address.domain, *bus}, n);
  }
}

std::optional<tPciTree> tPciTree::read(const std::string& folder) {
  std::vector<tPciDevice> devices;
  std::error_code failure;
  for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
       entry.increment(failure)) {
    const auto address = addressOf(entry->path().filename().string());
    if (address && devices.size() < kMostDevices) {
      devices.push_back(readDevice(entry->path(), *address));
    }
  }
  if (devices.empty()) return std::nullopt;
  return tPciTree(std::move(devices));
}

const tPciDevice* tPciTree::find(std::uint32_t bus, std::uint32_t device,
                                 std::uint32_t function) const {
  const auto found = std::find_if(devices_.begin(), devices_.end(), [&](const tPciDevice& one) {
    const tPciDevice::tAddress& address = one.address;
    return address.domain == 0 && std::tie(address.bus, address.device, address.function) ==
                                      std::tie(bus, device, function);
  });
  return found == devices_.end() ? nullptr : &*found;
}

const tPciDevice* tPciTree::parentOf(const tPciDevice& device) const {
  const auto found = bridges_.find({device.address.domain, device.address.bus});
  return found == bridges_.end() ? nullptr : &devices_[found->second];
}

tJson jsonOfPciTree(const tPciTree& tree) {
  tJson list = tJson::array();
  for (const tPciDevice& device : tree.devices()) {
    tJson json = {{"address", textOf(device.address)}};
    for (const auto& [name, text] : device.texts) json[name] = text;
    list.push_back(std::move(json));
  }
  return list;
}

tPciTree pciTreeOfJson(const tJson& json) {
  if (!json.is_array() || json.size() > kMostDevices) {
    throw std::runtime_error("no list of at most " + std::to_string(kMostDevices) + " devices");
  }
  std::vector<tPciDevice> devices;
  for (const tJson& entry : json) {
    if (!entry.is_object()) throw std::runtime_error("a device that is no object");
    tPciDevice& device = devices.emplace_back();
    bool hasAddress = false;
    for (const auto& [name, value] : entry.items()) {
      if (!value.is_string() || !isPlain(value.get_ref<const std::string&>())) {
        throw std::runtime_error(name + " of a device is no short plain text");
      }
      const auto& text = value.get_ref<const std::string&>();
      if (name != "address") {
        device.texts[name] = text;
        continue;
      }
      const auto address = addressOf(text);
      if (!address) throw std::runtime_error("no PCI address: " + text);
      device.address = *address;
      hasAddress = true;
    }
    if (!hasAddress) throw std::runtime_error("a device without an address");
  }
  return tPciTree(std::move(devices));
}

}  // namespace tool
