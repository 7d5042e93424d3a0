#include "source/varmex/deviceReadings.h"

#include <cstring>
#include <optional>

#include "ostrel/quarks/numbers.h"
#include "source/varmex/description.h"

namespace varmex {

namespace {

constexpr std::string_view kFunctionList = "FunctionList";
constexpr std::string_view kDeviceList = "DeviceList";

// A "None" in either place marks a section that is only a step on the way to others.
void recordFunctionAddress(const tIniSection& section, std::uint32_t function,
                           std::vector<tDeviceAddress>& addresses) {
  constexpr std::string_view kBus = "PCIBusNumber";
  constexpr std::string_view kDevice = "PCIDeviceNumber";
  const char* const bus = tIniFile::findValueText(section, kBus);
  const char* const device = bus ? tIniFile::findValueText(section, kDevice) : nullptr;
  if (!device || std::strcmp(bus, "None") == 0 || std::strcmp(device, "None") == 0) return;
  const auto numberOf = [&section](const char* text, std::string_view item) {
    return static_cast<std::uint32_t>(tIniFile::parseNumber(text, section.nameView(), item));
  };
  const std::uint32_t busNumber = numberOf(bus, kBus);
  addresses.push_back({0, busNumber, numberOf(device, kDevice), function});
}

// Reads literal texts and numbers one behind the other; what does not fit is left where it is. A
// number is read as "%d" does, so it may have white space and a sign ahead of it.
class tNameReader {
 public:
  explicit tNameReader(const char* text) : text_(text) {}

  bool literal(const char* expected) {
    const char* text = text_;
    for (; *expected; ++text, ++expected) {
      if (*text != *expected) return false;
    }
    text_ = text;
    return true;
  }

  bool number(std::uint32_t& value) {
    const tSignedText number = readSigned(text_);
    if (!number.end) return false;
    value = static_cast<std::uint32_t>(number.value);
    text_ = number.end;
    return true;
  }

 private:
  const char* text_;
};

std::optional<tDeviceAddress> parseResourceName(std::string_view token) {
  if (!token.ends_with("::INSTR")) return std::nullopt;
  // What follows the token cannot be taken for a part of a number: it is a separator or the end.
  tNameReader name(token.data());
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  std::uint32_t third = 0;
  std::uint32_t fourth = 0;
  if (!name.literal("PXI") || !name.number(first)) return std::nullopt;
  if (!name.literal("::") || !name.number(second)) return std::nullopt;
  if (name.literal("-")) {
    if (!name.number(third) || !name.literal(".") || !name.number(fourth)) return std::nullopt;
    return tDeviceAddress{0, second, third, fourth};
  }
  // In the older form the number behind "PXI" is the bus.
  if (!name.literal("::") || !name.number(third)) return std::nullopt;
  return tDeviceAddress{0, first, second, third};
}

}  // namespace

// The tree is walked depth first with a stack of its own: the description decides how deep it goes,
// and the caller's stack may be small.
void tFunctionWalk::walkSlotFunctions(const tIniSection& section,
                                      std::vector<tDeviceAddress>& addresses) {
  const char* const functions = tIniFile::findValueText(section, kFunctionList);
  if (!functions) {
    recordFunctionAddress(section, 0, addresses);
    return;
  }
  name_ = section.nameView();
  descend(kFunctionList, functions, true);
  while (!levels_.empty()) {
    tLevel& level = levels_.back();
    if (level.next == numbers_.size()) {
      numbers_.resize(level.first);
      levels_.pop_back();
    } else {
      name_.resize(level.parentLength);
      const std::uint32_t number = numbers_[level.next++];
      level.areFunctions ? walkFunction(number, addresses) : walkBridgeDevice(number);
    }
  }
}

void tFunctionWalk::walkFunction(std::uint32_t function, std::vector<tDeviceAddress>& addresses) {
  name_.append("Function").append(std::to_string(function));
  const tIniSection* const section = file_.findSection(name_);
  if (!section) return;
  recordFunctionAddress(*section, function, addresses);
  const char* const devices = tIniFile::findValueText(*section, kDeviceList);
  if (devices) descend(kDeviceList, devices, false);
}

void tFunctionWalk::walkBridgeDevice(std::uint32_t device) {
  name_.append("Device").append(std::to_string(device));
  descend(kFunctionList, file_.getValueText(name_, kFunctionList), true);
}

void tFunctionWalk::descend(std::string_view list, const char* text, bool toFunctions) {
  levels_.push_back({name_.size(), numbers_.size(), numbers_.size(), toFunctions});
  tIniFile::parseNumberList(text, name_, list, numbers_);
  // A number named twice would walk all below it twice, and so on at every level.
  dropRepeats(numbers_, levels_.back().first);
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
