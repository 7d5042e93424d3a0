#include "tests/agreement/mutations.h"

#include <algorithm>
#include <map>

#include "tests/support/texts.h"
#include "tools/synthetic/installation.h"

namespace agreement {

namespace {

using test::split;
using tLines = std::vector<std::string>;

std::size_t below(std::size_t limit, tRandom& random) {
  return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
}

template <class List>
const auto& oneOf(const List& list, tRandom& random) {
  return *std::next(std::begin(list), static_cast<std::ptrdiff_t>(below(std::size(list), random)));
}

bool isHeader(const std::string& line) { return line.starts_with('['); }
bool isItem(const std::string& line) { return line.find(" = ") != std::string::npos; }
std::string nameOf(const std::string& line) { return line.substr(0, line.find(" = ")); }
std::string valueOf(const std::string& line) { return line.substr(line.find(" = ") + 3); }

// The name without the numbers in it, so that rare kinds of items come as often as common ones.
std::string kindOf(std::string line) {
  line = nameOf(line);
  std::erase_if(line, [](char byte) { return byte >= '0' && byte <= '9'; });
  return line;
}

// A line of a kind that is chosen first; the end of the file when there is none.
template <class Accept>
tLines::iterator chooseLine(tLines& lines, tRandom& random, Accept accept) {
  std::map<std::string, std::vector<tLines::iterator>> kinds;
  for (auto line = lines.begin(); line != lines.end(); ++line) {
    if (accept(*line)) kinds[kindOf(*line)].push_back(line);
  }
  return kinds.empty() ? lines.end() : oneOf(oneOf(kinds, random).second, random);
}

const tLines kValues = split(
    R"(|""|" "|x|-1|0|1|2|3|0x2|0x1F|012|08|+ 5|+3|12abc|"8"|"9"|"0,8"|"1,,2"|"1,2,"|"1,1"|"1 ,2"|)"
    R"("x,1"|99|2147483648|4294967295|4294967296|None|none|"1,99"|"-3"|300|"a"|"a,b"|PXI-1Slot|)"
    R"(PXIeSystemSlot2Link|PXIePeripheralSlot|pxieperipheralslot|PXI0::4-0.0::INSTR|)"
    R"(PXI4::0::1::INSTR|PXI0::4-0::INSTR|"\""|)"
    "M\xFCller",
    "|");

std::string changedValue(tLines& lines, const std::string& line, tRandom& random) {
  switch (below(4, random)) {
    case 0: {  // that of another item of its kind
      const auto isAlike = [&](const std::string& other) {
        return isItem(other) && kindOf(other) == kindOf(line);
      };
      return valueOf(*chooseLine(lines, random, isAlike));
    }
    case 1: {  // one byte less or other
      std::string value = valueOf(line);
      if (value.empty()) return "1";
      const std::size_t place = below(value.size(), random);
      if (below(2, random) != 0) return value.erase(place, 1);
      value[place] = "019,x;\"- "[below(9, random)];
      return value;
    }
    default: return oneOf(kValues, random);
  }
}

// Names that stand for each other, and numbers in names.
std::string renamed(std::string name, tRandom& random) {
  if (name.empty()) return "Q";
  static const std::pair<std::string, const char*> kAlike[] = {
      {"StarSystemTiming", "SystemTiming"}, {"SystemTiming", "StarSystemTiming"}, {"Sets", "Set"}};
  for (const auto& [from, to] : kAlike) {
    const std::size_t place = name.find(from);
    if (place != std::string::npos && below(2, random) != 0) {
      return name.replace(place, from.size(), to);
    }
  }
  const std::size_t digit = name.find_last_of("0123456789");
  if (digit != std::string::npos && below(2, random) != 0) {
    name[digit] = "0123456789"[below(10, random)];
    return name;
  }
  name[below(name.size(), random)] = 'Q';
  return name;
}

const tLines kGarbage = split(
    "garbage|[Chassis1Slot2|[]|=5|; comment|Key =|[Chassis1]|[Chassis7]|[Chassis1Slot19]|"
    "[Chassis07]",
    "|");

const std::string kStrangeSections[] = {
    "[Chassis1Slot19]|SlotType = PXIePeripheralSlot|PeripheralSlotLinkWidth1 = x",
    "[Chassis1Slot20]|SlotType = PXIe|PCIBusNumber = 5",
    "[Chassis1Slot19]|PCISlotPathRootBus = 09|FunctionList = x",
    "[Chassis1Slot19]|SlotType = PXIeSystemTimingSlot|AddressInfo = PXI0::5|"
    "PeripheralModuleLinkWidthMax = z",
    "[Chassis7]|Vendor = V|Model = M|SerialNumber = S|SlotList = 1|TriggerBusList = 1|"
    "[Chassis7Slot1]|SlotType = PXIeHybridSlot|AddressInfo = PXI0::250-31.0::INSTR|"
    "PeripheralModuleLinkWidthMax = z",
    "[Chassis8]|Vendor = V|Model = M|TriggerManager = \"\"|"
    "[Chassis8Slot2]|PCISlotPath = \"a,b\"|PCISlotPathRootBus = +31|LocalBusLeft = x",
    "[Chassis8]|Vendor = V|Model = M|[Chassis8Slot2]|PCISlotPath = ab",
    "[Chassis8]|Vendor = V|Model = M|"
    "[Chassis8Slot2]|PCISlotPath = \"a,b\"|PCISlotPathRootBus = 256",
    "[Chassis8]|Vendor = V|Model = M|SlotList = \"1,x\"",
    "[Chassis8]|Vendor = V|Model = M|SerialNumber = 9|SlotList = 1|TriggerBridgeList = 1|"
    "[Chassis8Slot1]|SlotType = PXIeSystemSlot2Link",
    // A set's controller is read for slots on its lines as well.
    "[Chassis7]|Vendor = V|Model = M|SerialNumber = S|SlotList = \"2,3\"|"
    "StarSystemTimingSetList = 1|[Chassis7Slot2]|SlotType = PXIeSystemTimingSlot|"
    "[Chassis7Slot3]|SlotType = PXIePeripheralSlot|[Chassis7StarSystemTimingSets1]|"
    "StarSystemTimingSet0 = 3|StarSystemTimingSet1 = 2|SystemTimingSlot = x",
    // Every slot has been found before the number that is none.
    "[Chassis7]|Vendor = V|Model = M|SerialNumber = S|SlotList = \"2,3\"|"
    "StarTriggerList = \"1,2\"|StarSystemTimingSetList = \"1,2\"|"
    "[Chassis7Slot2]|SlotType = PXIeSystemTimingSlot|[Chassis7Slot3]|SlotType = PXIePeripheralSlot|"
    "[Chassis7StarTrigger1]|PXI_STAR0 = 3|SystemTimingSlot = 2|"
    "[Chassis7StarTrigger2]|PXI_STAR0 = x|"
    "[Chassis7StarSystemTimingSets1]|StarSystemTimingSet0 = 3|SystemTimingSlot = 2|"
    "[Chassis7StarSystemTimingSets2]|StarSystemTimingSet0 = x"};

// What a mutation may take apart: a file, an item of it and a section from its header on.
struct tTarget {
  tDescription& description;
  int file;
  tLines& lines;
  tLines::iterator item;
  tLines::iterator header;
  tRandom& random;

  tLines::iterator sectionEnd() const { return std::find_if(header + 1, lines.end(), isHeader); }
  void addAnywhere(const std::string& line) const {
    const std::size_t place = below(lines.size() + 1, random);
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(place), line);
  }
};

void dropItem(const tTarget& target) { target.lines.erase(target.item); }

void repeatItem(const tTarget& target) { target.addAnywhere(*target.item); }

void dropSection(const tTarget& target) { target.lines.erase(target.header, target.sectionEnd()); }

void copySection(const tTarget& target) {
  tLines& other = target.description.files[1 - target.file];
  other.insert(other.end(), target.header, target.sectionEnd());
}

void renameSection(const tTarget& target) {
  std::string& line = *target.header;
  line = '[' + renamed(line.substr(1, line.size() - 2), target.random) + ']';
}

void renameItem(const tTarget& target) {
  std::string& line = *target.item;
  line = renamed(nameOf(line), target.random) + " = " + valueOf(line);
}

void changeValue(const tTarget& target) {
  std::string& line = *target.item;
  line = nameOf(line) + " = " + changedValue(target.lines, line, target.random);
}

void addGarbage(const tTarget& target) { target.addAnywhere(oneOf(kGarbage, target.random)); }

void addSection(const tTarget& target) {
  const tLines section = split(oneOf(kStrangeSections, target.random), "|");
  target.lines.insert(target.lines.end(), section.begin(), section.end());
}

void changeEncoding(const tTarget& target) {
  static const std::string kEncodings[] = {"\xFF\xFE", "\xFE\xFF", "\xEF\xBB\xBF", "\n"};
  target.description.encodings[target.file] = oneOf(kEncodings, target.random);
}

void changeLineEnds(const tTarget& target) {
  target.description.lineEnd = below(2, target.random) != 0 ? "\r\n" : "\r";
}

// A number that is none, where the library may or may not read it.
void addStrangeNumber(const tTarget& target) {
  static const std::pair<const char*, tLines> kItems[] = {
      {"Slot", split("PeripheralSlotLinkWidth1|SystemSlotLinkOrigin2|PeripheralModuleLinkWidthMax|"
                     "PCISlotPathRootBus|PeripheralModuleOccupiedSlotList|PCIBusNumber",
                     "|")},
      {"Star", split("PXI_STAR16|PXI_STAR17|SystemTimingSet16", "|")}};
  const auto& [kind, items] = oneOf(kItems, target.random);
  const auto header =
      chooseLine(target.lines, target.random, [kind = kind](const std::string& line) {
        return isHeader(line) && line.find(kind) != std::string::npos;
      });
  if (header == target.lines.end()) return;
  target.lines.insert(header + 1, oneOf(items, target.random) + " = x");
}

// The device of one slot in another one as well, of either file.
void claimTwice(const tTarget& target) {
  tRandom& random = target.random;
  const auto isNames = [](const std::string& line) { return line.starts_with("AddressInfo = "); };
  const auto isBus = [](const std::string& line) { return line.starts_with("PCIBusNumber = "); };
  auto& [classic, express] = target.description.files;
  const auto names = chooseLine(express, random, isNames);
  const auto bus = chooseLine(classic, random, isBus);
  if (classic.end() - bus > 1 && below(2, random) != 0) {
    bus[0] = "PCIBusNumber = 4";
    bus[1] = "PCIDeviceNumber = 0";
  } else if (names != express.end()) {
    *names = *chooseLine(express, random, isNames);
  }
}

// A value is what is wrong most often.
using tMutation = void (*)(const tTarget&);
constexpr tMutation kMutations[] = {
    changeValue, changeValue, changeValue, changeValue,    changeValue,   changeValue,
    changeValue, dropItem,    repeatItem,  dropSection,    copySection,   renameSection,
    renameItem,  renameItem,  addGarbage,  addSection,     addSection,    addStrangeNumber,
    claimTwice,  changeValue, dropItem,    changeEncoding, changeLineEnds};

}  // namespace

std::string tDescription::text(int file) const {
  std::string text = encodings[file];
  for (const std::string& line : files[file]) text += line + lineEnd;
  return text;
}

tDescription makeRight(tRandom& random) {
  std::vector<synthetic::tPlan> plans(1 + below(3, random));
  for (synthetic::tPlan& plan : plans) {
    plan.kind =
        below(3, random) == 0 ? synthetic::tChassisKind::classic : synthetic::tChassisKind::express;
    plan.slots = static_cast<std::uint32_t>(2 + below(17, random));
    plan.modules = static_cast<std::uint32_t>(below(19, random));
  }
  const synthetic::tTexts texts = synthetic::makeInstallation(plans);
  return {{split(texts.pxiSys, "\n"), split(texts.pxieSys, "\n")}, {}, "\n"};
}

std::string mutate(tDescription& description, tRandom& random) {
  const tDescription before = description;
  int file = static_cast<int>(below(2, random));
  if (description.files[file].empty()) file = 0;
  tLines& changed = description.files[file];
  const auto item = chooseLine(changed, random, isItem);
  const auto header = chooseLine(changed, random, isHeader);
  if (item == changed.end() || header == changed.end()) return "nothing left";
  oneOf(kMutations, random)({description, file, changed, item, header, random});
  for (const int n : {0, 1}) {
    const tLines& lines = description.files[n];
    const auto line = std::ranges::mismatch(before.files[n], lines).in2;
    if (line == lines.end()) continue;
    return (n == 0 ? "pxisys.ini:" : "pxiesys.ini:") + std::to_string(line - lines.begin() + 1) +
           ": " + *line;
  }
  return "an encoding, line ends or the end of a file";
}

}  // namespace agreement
