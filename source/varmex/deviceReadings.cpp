#include "source/varmex/deviceReadings.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "ostrel/quarks/numbers.h"
#include "source/varmex/description.h"

namespace varmex {

namespace {

constexpr tLiteral kFunctionList = "FunctionList";
constexpr tLiteral kDeviceList = "DeviceList";

bool isNone(const tIniItem& item) {
  return *item.value == 'N' && std::strcmp(item.value, "None") == 0;
}

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

bool isSeparator(char byte) { return byte == ';' || byte == '+'; }

// Reads resource names piece by piece and never past their text's end: what does not fit is left
// where it is. A number is read as "%d" does, so it may have white space and a sign ahead of it; a
// plus is none, it ends the name. One object serves for all names of a text, which it refers to.
class tNameReader {
 public:
  // False when there is none at the start of the text.
  bool read(const char* text, tDeviceAddress& address) {
    begin_ = text;
    text_ = text;
    if (!skipKnownHead()) {
      head_ = {};
      std::uint32_t first = 0;
      if (!literal("PXI") || !number(first) || !literal("::") || !number(device_.bus)) return false;
      if (!literal("-")) {
        // In the older form the number behind "PXI" is the bus.
        address = {0, first, device_.bus, 0};
        return literal("::") && number(address.function) && isWhole();
      }
      if (!number(device_.device) || !literal(".")) return false;
      head_ = {begin_, text_};
    }
    address = device_;
    return number(address.function) && isWhole();
  }

  // Behind the name.
  const char* end() {
    while (*text_ && !isSeparator(*text_)) ++text_;
    return text_;
  }

 private:
  // Functions of a device mostly stand together, with the same ahead of their numbers.
  bool skipKnownHead() {
    if (head_.empty() || std::strncmp(text_, head_.data(), head_.size()) != 0) return false;
    text_ += head_.size();
    return true;
  }

  bool isWhole() {
    const bool isEnd = literal("::INSTR") && (*text_ == '\0' || isSeparator(*text_));
    return isEnd || std::string_view(begin_, end()).ends_with("::INSTR");
  }

  template <std::size_t Size>
  bool literal(const char (&expected)[Size]) {
    for (std::size_t n = 0; n < Size - 1; ++n) {
      if (text_[n] != expected[n]) return false;
    }
    text_ += Size - 1;
    return true;
  }

  bool number(std::uint32_t& value) {
    const tSignedText number = readSigned(text_);
    if (!number.end) return false;
    if (!isDigit(*text_) && std::find(text_, number.end, '+') != number.end) return false;
    value = static_cast<std::uint32_t>(number.value);
    text_ = number.end;
    return true;
  }

  const char* begin_ = nullptr;
  const char* text_ = nullptr;
  std::string_view head_;    // up to the function of a name that was read
  tDeviceAddress device_{};  // that it tells of
};

}  // namespace

tResult<> tFunctionWalk::walkSlotFunctions(const tIniSection& section,
                                           std::vector<tDeviceAddress>& addresses) {
  const tIniItem* const functions = file_.findItem(section, kFunctionList, places_.functions);
  if (!functions) return recordAddress(section, 0, addresses);
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
  const tIniSection* const section =
      file_.findSectionBehind(&parent, {parent.nameView(), "Function", function});
  if (!section) return kDone;
  const auto done = recordAddress(*section, function, addresses);
  if (!done) return done.refusal();
  const tIniItem* const devices = file_.findItem(section, kDeviceList);
  return devices ? descend(*section, *devices, false) : kDone;
}

tResult<> tFunctionWalk::walkBridgeDevice(const tIniSection& parent, std::uint32_t device) {
  const tIniSection* const section =
      file_.findSectionBehind(&parent, {parent.nameView(), "Device", device});
  const auto functions = file_.getItem(
      section ? tIniPlace(*section) : tIniPlace(tShortName("Device", device), &parent),
      kFunctionList);
  if (!functions) return functions.refusal();
  return descend(*section, **functions, true);
}

// A "None" in either place marks a section that is only a step on the way to others.
tResult<> tFunctionWalk::recordAddress(const tIniSection& section, std::uint32_t function,
                                       std::vector<tDeviceAddress>& addresses) {
  const tIniItem* const bus = file_.findItem(section, "PCIBusNumber", places_.bus);
  const tIniItem* const device =
      bus ? file_.findItem(section, "PCIDeviceNumber", places_.device) : nullptr;
  if (!device || isNone(*bus) || isNone(*device)) return kDone;
  const auto busNumber = asUnsigned(tIniFile::numberOf(section, *bus));
  if (!busNumber) return busNumber.refusal();
  const auto deviceNumber = asUnsigned(tIniFile::numberOf(section, *device));
  if (!deviceNumber) return deviceNumber.refusal();
  addresses.push_back({0, *busNumber, *deviceNumber, function});
  return kDone;
}

tResult<> tFunctionWalk::descend(const tIniSection& section, const tIniItem& list,
                                 bool toFunctions) {
  const std::size_t first = numbers_.size();
  levels_.push_back({&section, first, first, toFunctions});
  // Each once: a number named twice would walk all below it twice, and so on at every level.
  return appendEachOnce(section, list, numbers_);
}

void parseResourceNames(const char* text, std::vector<tDeviceAddress>& addresses) {
  tNameReader reader;
  while (*text) {
    tDeviceAddress address{};
    if (reader.read(text, address)) addresses.push_back(address);
    text = reader.end();
    while (isSeparator(*text)) ++text;
  }
}

}  // namespace varmex
