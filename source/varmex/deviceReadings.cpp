#include "source/varmex/deviceReadings.h"

#include <cstring>
#include <optional>

#include "ostrel/quarks/numbers.h"
#include "source/varmex/description.h"

namespace varmex {

namespace {

constexpr tLiteral kFunctionList = "FunctionList";
constexpr tLiteral kDeviceList = "DeviceList";

// A "None" in either place marks a section that is only a step on the way to others.
tResult<> recordFunctionAddress(const tIniFile& file, const tIniSection& section,
                                std::uint32_t function, std::vector<tDeviceAddress>& addresses) {
  const tIniItem* const bus = file.findItem(&section, "PCIBusNumber");
  const tIniItem* const device = bus ? file.findItem(&section, "PCIDeviceNumber") : nullptr;
  if (!device) return kDone;
  if (std::strcmp(bus->value, "None") == 0 || std::strcmp(device->value, "None") == 0) return kDone;
  const auto busNumber = asUnsigned(tIniFile::numberOf(section, *bus));
  if (!busNumber) return busNumber.refusal();
  const auto deviceNumber = asUnsigned(tIniFile::numberOf(section, *device));
  if (!deviceNumber) return deviceNumber.refusal();
  addresses.push_back({0, *busNumber, *deviceNumber, function});
  return kDone;
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

tResult<> tFunctionWalk::walkSlotFunctions(const tIniSection& section,
                                           std::vector<tDeviceAddress>& addresses) {
  const tIniItem* const functions = file_.findItem(&section, kFunctionList);
  if (!functions) return recordFunctionAddress(file_, section, 0, addresses);
  return descend(section, *functions, true).then([&](tNothing) { return walkLevels(addresses); });
}

// The tree is walked depth first with a stack of its own: the description decides how deep it goes,
// and the caller's stack may be small.
tResult<> tFunctionWalk::walkLevels(std::vector<tDeviceAddress>& addresses) {
  while (!levels_.empty()) {
    tLevel& level = levels_.back();
    if (level.next == numbers_.size()) {
      numbers_.resize(level.first);
      levels_.pop_back();
      continue;
    }
    const std::uint32_t number = numbers_[level.next++];
    const auto done = level.areFunctions ? walkFunction(*level.parent, number, addresses)
                                         : walkBridgeDevice(*level.parent, number);
    if (!done) return done.refusal();
  }
  return kDone;
}

tResult<> tFunctionWalk::walkFunction(const tIniSection& parent, std::uint32_t function,
                                      std::vector<tDeviceAddress>& addresses) {
  const tIniSection* const section = findBelow(parent, {"Function", function});
  if (!section) return kDone;
  const auto done = recordFunctionAddress(file_, *section, function, addresses);
  if (!done) return done.refusal();
  const tIniItem* const devices = file_.findItem(section, kDeviceList);
  return devices ? descend(*section, *devices, false) : kDone;
}

tResult<> tFunctionWalk::walkBridgeDevice(const tIniSection& parent, std::uint32_t device) {
  const tShortName name("Device", device);
  const tIniSection* const section = findBelow(parent, name);
  const auto functions =
      file_.getItem(section ? tIniPlace(*section) : tIniPlace(name, &parent), kFunctionList);
  if (!functions) return functions.refusal();
  return descend(*section, **functions, true);
}

const tIniSection* tFunctionWalk::findBelow(const tIniSection& parent, const tShortName& name) {
  name_.assign(parent.nameView()).append(name.view());
  return file_.findSection(name_);
}

tResult<> tFunctionWalk::descend(const tIniSection& section, const tIniItem& list,
                                 bool toFunctions) {
  const std::size_t first = numbers_.size();
  levels_.push_back({&section, first, first, toFunctions});
  const auto done = tIniFile::appendNumbersOf(section, list, numbers_);
  if (!done) return done.refusal();
  // A number named twice would walk all below it twice, and so on at every level.
  dropRepeats(numbers_, first);
  return kDone;
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
