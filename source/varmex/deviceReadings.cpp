#include "source/varmex/deviceReadings.h"

#include <cstring>
#include <optional>
#include <string_view>

#include "ostrel/quarks/numbers.h"

namespace varmex {

namespace {

// A "None" in either place marks a section that is only a step on the way to others.
void recordFunctionAddress(const tIniFile& file, const std::string& section, std::uint32_t function,
                           std::vector<tDeviceAddress>& addresses) {
  constexpr const char* kBus = "PCIBusNumber";
  constexpr const char* kDevice = "PCIDeviceNumber";
  const char* const bus = file.findValueText(section, kBus);
  const char* const device = bus ? file.findValueText(section, kDevice) : nullptr;
  if (!device || std::strcmp(bus, "None") == 0 || std::strcmp(device, "None") == 0) return;
  const auto busNumber = static_cast<std::uint32_t>(tIniFile::parseNumber(bus, section, kBus));
  const auto deviceNumber =
      static_cast<std::uint32_t>(tIniFile::parseNumber(device, section, kDevice));
  addresses.push_back({0, busNumber, deviceNumber, function});
}

// Sections that hang below one section and are still to be walked.
struct tLevel {
  std::string parent;
  std::vector<std::uint32_t> numbers;
  std::size_t next;
  bool areFunctions;  // else bridge devices
};

// The tree is walked depth first with a stack of its own: the description decides how deep it goes,
// and the caller's stack may be small.
class tFunctionWalk {
 public:
  tFunctionWalk(const tIniFile& file, std::vector<tDeviceAddress>& addresses)
      : file_(file), addresses_(addresses) {}

  void run(const std::string& section) {
    descend(section, "FunctionList", true);
    while (!levels_.empty()) {
      tLevel& level = levels_.back();
      if (level.next == level.numbers.size()) {
        levels_.pop_back();
      } else {
        const std::uint32_t number = level.numbers[level.next++];
        level.areFunctions ? walkFunction(level.parent, number)
                           : walkBridgeDevice(level.parent, number);
      }
    }
  }

 private:
  void walkFunction(const std::string& parent, std::uint32_t function) {
    const std::string section = parent + "Function" + std::to_string(function);
    recordFunctionAddress(file_, section, function, addresses_);
    if (file_.hasItem(section, "DeviceList")) descend(section, "DeviceList", false);
  }

  void walkBridgeDevice(const std::string& parent, std::uint32_t device) {
    descend(parent + "Device" + std::to_string(device), "FunctionList", true);
  }

  void descend(const std::string& section, const char* list, bool toFunctions) {
    levels_.push_back({section, file_.getNumberList(section, list), 0, toFunctions});
  }

  const tIniFile& file_;
  std::vector<tDeviceAddress>& addresses_;
  std::vector<tLevel> levels_;
};

// Reads a pattern of literal texts and "%d" in the way of the C library: a number may have white
// space and a sign ahead of it.
bool readNumbers(const char* text, std::initializer_list<std::string_view> literals,
                 std::uint32_t* numbers) {
  for (const std::string_view literal : literals) {
    for (const char byte : literal) {
      if (*text++ != byte) return false;
    }
    const tSignedText number = readSigned(text);
    if (!number.end) return false;
    *numbers++ = static_cast<std::uint32_t>(number.value);
    text = number.end;
  }
  return true;
}

std::optional<tDeviceAddress> parseResourceName(std::string_view token) {
  if (!token.ends_with("::INSTR")) return std::nullopt;
  // What follows the token cannot be taken for a part of a number: it is a separator or the end.
  std::uint32_t numbers[4];
  if (readNumbers(token.data(), {"PXI", "::", "-", "."}, numbers)) {
    return tDeviceAddress{0, numbers[1], numbers[2], numbers[3]};
  }
  // In the older form the number behind "PXI" is the bus.
  if (readNumbers(token.data(), {"PXI", "::", "::"}, numbers)) {
    return tDeviceAddress{0, numbers[0], numbers[1], numbers[2]};
  }
  return std::nullopt;
}

}  // namespace

void walkSlotFunctions(const tIniFile& file, const std::string& section,
                       std::vector<tDeviceAddress>& addresses) {
  if (file.hasItem(section, "FunctionList")) {
    tFunctionWalk(file, addresses).run(section);
  } else {
    recordFunctionAddress(file, section, 0, addresses);
  }
}

void parseResourceNames(const char* text, std::vector<tDeviceAddress>& addresses) {
  const auto isSeparator = [](char byte) { return byte == ';' || byte == '+'; };
  while (*text) {
    const char* end = text;
    while (*end && !isSeparator(*end)) ++end;
    const auto address = parseResourceName({text, static_cast<std::size_t>(end - text)});
    if (address) addresses.push_back(*address);
    text = end;
    while (isSeparator(*text)) ++text;
  }
}

}  // namespace varmex
