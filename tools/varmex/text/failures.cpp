#include "tools/varmex/text/failures.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <map>
#include <vector>

#include "corpxiTools/fileSystem/fileStatus.h"
#include "corpxiTools/fileSystem/folders.h"
#include "corpxiTools/fileSystem/utils.h"
#include "ostrel/quarks/status.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/files.h"
#include "tools/varmex/text/shownPaths.h"
#include "tools/varmex/text/slotPaths.h"

namespace tool {

namespace {

// What happened, what to do about it, and the items of the description that may be at fault.
struct tSentence {
  std::string what;
  std::string remedy;
  std::vector<tFaultyItem> about = {};
};

using tFields = std::map<std::string, std::string>;

tFields fieldsOf(const varmex::Error& error) {
  tFields fields;
  for (const auto& [key, value] : varmex::detail::flattenJson(error.json())) {
    fields.try_emplace(key, value);
  }
  return fields;
}

// What the library says no with, in words. Of the rows with an error's code the first one counts
// whose key its text has; names in braces stand for what that has under them, in the section of the
// item at fault for what was asked.
struct tWords {
  std::int32_t code;
  const char* key;  // empty for any
  const char* what;
  const char* remedy;
  std::vector<tFaultyItem> about = {};
};

constexpr const char* kLook = "\"varmex show\" lists what there is.";
constexpr const char* kCheck = "Run \"varmex check\" to see what to mend.";
constexpr const char* kNoRight = "You have no right to look at {denied}.";
constexpr const char* kGrant = "Grant the right to read it and to enter its folders.";
constexpr const char* kNoLine = "\"varmex terminals\" lists those it has.";
constexpr const char* kNoFiles =
    "A resource manager writes it. VARMEX_FSROOT names another root to look at, and "
    "\"varmex make FOLDER express:18\" writes a simulated installation into one.";
constexpr const char* kNoMemory = "There is not enough memory.";
constexpr const char* kRefusedEncoding = "An exception occurred in tIniFile";

const tWords kWords[] = {
    {varmex_errorUnknownItem, "slotNum",
     "Chassis {chassisNum} has no slot {slotNum}: neither file has a section "
     "[Chassis{chassisNum}Slot{slotNum}].",
     kLook},
    {varmex_errorUnknownItem, "bridgeNum",
     "Chassis {chassisNum} has no trigger bridge {bridgeNum}: neither file has a section "
     "[Chassis{chassisNum}TriggerBridge{bridgeNum}].",
     kLook},
    {varmex_errorUnknownItem, "chassisNumber",
     "There is no chassis {chassisNumber}: neither file has a section [Chassis{chassisNumber}].",
     kLook},
    {varmex_errorUnknownItem, "address", "No module has the PCI address {address}.", kLook},
    {varmex_errorInformationConflict, "existingSlot",
     "Slots {existingChassis}/{existingSlot} and {chassis}/{slot} both claim the device "
     "{bus}.{dev}.",
     kCheck},
    {varmex_errorInformationConflict,
     "destinationLine",
     "{attribute} of the line map names line {destinationLine}, and lines are 0 to 7.",
     kCheck,
     {{tItemFault::noLine, "{mapSection}", "{attribute}", "{destinationLine}"}}},
    {varmex_errorInformationConflict,
     "sectionName_",
     "The two files disagree on {itemName} in section [{sectionName_}].",
     kCheck,
     {{tItemFault::differs, "{sectionName_}", "{itemName}"}}},
    {varmex_errorInformationConflict, "tmIdentifier", "The trigger manager's name is empty.",
     kCheck},
    {varmex_errorInformationNotAvailable, "mappingSection_",
     "Neither file has the line map [{mappingSection_}].", kCheck},
    {varmex_errorInformationNotAvailable, "attribute",
     "The chassis has no description file: its own files name none or differ, or the registry has "
     "no "
     "ChassisDescriptionFilePath.",
     kCheck},
    {varmex_errorInformationNotAvailable, "sectionName_",
     "Neither file has {itemName} in section [{sectionName_}].", kCheck},
    {varmex_errorInformationNotAvailable,
     "bad_slot_type",
     "\"{bad_slot_type}\" is no type of slot.",
     kCheck,
     {{tItemFault::noSlotType, "{slotSection}", "SlotType", "{bad_slot_type}"}}},
    {varmex_errorInformationConflict,
     "message",
     "Slot 2 has no valid slot path, by which a chassis of pxisys.ini alone is known.",
     kCheck,
     {{tItemFault::noSlotPath, "{slot2Section}", kRootBusItem},
      {tItemFault::noSlotPath, "{slot2Section}", kSlotPathItem}}},
    {varmex_softwareFault,
     "badCast",
     "PCISlotPathRootBus of slot 2 is no decimal number, which it must be in a chassis of "
     "pxisys.ini alone.",
     kCheck,
     {{tItemFault::noRootBus, "{slot2Section}", kRootBusItem}}},
    {varmex_softwareFault, "wrappedMessage", "The library met with a fault: {wrappedMessage}.",
     kCheck},
    {varmex_errorLockTimeout, "", "Another program kept {configuration} locked for 10 seconds.",
     "Try again when it is done; \"fuser {configuration}\" names it."},
    {varmex_pxiSystemDescriptionInaccessible, "path", "{path} could not be opened for 10 seconds.",
     "Make it a regular file that you have the right to read."},
    {ostrelerr_insufficientPermissions, "", kNoRight, kGrant},
    {varmex_fileAccessDenied, "", kNoRight, kGrant},
    {ostrelerr_invalidParameter, "",
     "The PXI service library lacks a function, or the system calls a path invalid.",
     "Install or repair the PXI service library."},
    {varmex_errorMemoryFull, "", kNoMemory, "Try again with more."},
    {ostrelerr_memoryFull, "", kNoMemory, "Try again with more."},
    {telmar_ra_errorResourcesInUse, "", "The terminal is held under another token.",
     "Wait, or use the holder's token."},
    {varmex_errorTriggerManagerLibraryNotFound, "",
     "The registry names no library for the trigger manager.",
     "Install the trigger manager's software."},
    {varmex_warningFailedSync, "",
     "The description could not be brought up to date and is shown as it stands.",
     "Install or repair the PXI service library."},
    {varmex_errorNotConnected, "", "The slot does not have this trigger line.", kNoLine},
    {varmex_errorStarController, "", "The slot does not have this trigger line.", kNoLine},
    {telmar_ra_errorRoutingFault, "", "The module does not have this terminal.", kNoLine},
};

// The messages of the reader of the files: {1} is the section, {2} the item.
struct tReaderWords {
  const char* between;  // the two names
  const char* end;
  const char* what;
  tItemFault fault;
};

constexpr tReaderWords kReaderWords[] = {
    {" item: ", " not found", "Section [{1}] has no {2}.", tItemFault::missing},
    {" item ", " is invalid", "{2} in section [{1}] is no number.", tItemFault::noNumber},
    {" item ", " is invalid.", "{2} in section [{1}] is no list of numbers.", tItemFault::noList},
};

// The names that the headers have for codes of which the library's texts tell none, or another.
struct tCodeName {
  std::int32_t code;
  const char* name;
};

constexpr tCodeName kCodeNames[] = {
    {varmex_errorLockTimeout, "varmex_errorLockTimeout"},
    {varmex_pxiSystemDescriptionInaccessible, "varmex_pxiSystemDescriptionInaccessible"},
    {varmex_errorLibraryNotAvailable, "varmex_errorLibraryNotAvailable"},
    {varmex_fileStatusFault, "varmex_fileStatusFault"},
    {varmex_fileAccessDenied, "varmex_fileAccessDenied"},
    {ostrelerr_memoryFull, "ostrelerr_memoryFull"},
    {ostrelerr_invalidParameter, "ostrelerr_invalidParameter"},
    {telmar_ra_errorReplyNotDelivered, "telmar_ra_errorReplyNotDelivered"},
    {telmar_ra_errorInvalidArgument, "telmar_ra_errorInvalidArgument"},
    {telmar_ra_errorRoutingFault, "telmar_ra_errorRoutingFault"},
    {telmar_ra_errorResourcesInUse, "telmar_ra_errorResourcesInUse"},
    {telmar_ra_errorFeatureUnsupported, "telmar_ra_errorFeatureUnsupported"},
};

std::string filled(std::string_view words, const tFields& fields) {
  std::string text;
  for (std::string_view rest = words; !rest.empty();) {
    const std::size_t open = std::min(rest.find('{'), rest.size());
    text += rest.substr(0, open);
    rest.remove_prefix(open);
    if (rest.empty()) break;
    const std::size_t close = rest.find('}');
    const auto field = fields.find(std::string(rest.substr(1, close - 1)));
    text += field == fields.end() ? "?" : field->second;
    rest.remove_prefix(close + 1);
  }
  return text;
}

// A sentence that ends with one full stop.
std::string ended(std::string text) { return text.ends_with('.') ? text : text + '.'; }

tSentence readerSentence(const std::string& message) {
  if (message == kRefusedEncoding) {
    return {"A file of the description is in UTF-16 or UTF-32, which the library does not read.",
            "Save it as UTF-8."};
  }
  constexpr std::string_view kSection = "ection ";
  const std::size_t begin = message.find(kSection);
  for (const tReaderWords& words : kReaderWords) {
    const std::size_t between = message.find(words.between);
    if (begin == std::string::npos || between == std::string::npos) continue;
    if (!message.ends_with(words.end)) continue;
    const std::size_t first = begin + kSection.size();
    const std::size_t second = between + std::string_view(words.between).size();
    const std::size_t end = message.size() - std::string_view(words.end).size();
    if (first > between || second > end) continue;
    const std::string section = message.substr(first, between - first);
    const std::string item = message.substr(second, end - second);
    return {
        filled(words.what, {{"1", section}, {"2", item}}), kCheck, {{words.fault, section, item}}};
  }
  return {ended(message), kCheck};
}

// The system refused something; most often the folder of the description is not there.
tSentence systemFault(const tFields& fields) {
  if (!isThere(varmex::getWindowsFolder())) return {tNoDescription().what(), kNoFiles};
  const auto reason = fields.find("string");
  return {"The system refused: " +
              (reason == fields.end() ? std::string("no reason given") : reason->second) + ".",
          ""};
}

// Of the files that every session asks for, those that may not be looked at.
std::string deniedPaths() {
  const std::string paths[] = {varmex::getPxiSysPath(), varmex::getPxieSysPath(),
                               configurationPath()};
  std::string denied;
  for (const std::string& path : paths) {
    if (varmex::queryFileStatus(path.c_str()).code != varmex::kFileAccessDenied) continue;
    denied += (denied.empty() ? "" : " and ") + path;
  }
  return denied.empty() ? paths[0] + ", " + paths[1] + " or " + paths[2] : denied;
}

std::string numberIn(const std::optional<std::uint32_t>& number) {
  return number ? std::to_string(*number) : "#";
}

// What places are made of, beside what the library's text has.
void addSections(const tAsked& asked, tFields& fields) {
  const std::string chassis = "Chassis" + numberIn(asked.chassis);
  fields["slotSection"] = chassis + "Slot" + numberIn(asked.slot);
  fields["slot2Section"] = chassis + "Slot2";
  fields["mapSection"] = asked.chassis && asked.bridge ? mapSectionOf(*asked.chassis, *asked.bridge)
                                                       : chassis + "LineMappingSpec#";
}

tFaultyItem filled(const tFaultyItem& item, const tFields& fields) {
  return {item.fault, filled(item.section, fields), filled(item.item, fields),
          filled(item.value, fields)};
}

tSentence sentenceOf(const varmex::Error& error, const tAsked& asked) {
  tFields fields = fieldsOf(error);
  if (error.code() == ostrelerr_osFault) return systemFault(fields);
  if (error.code() == varmex_errorUnknownItem && !isDescriptionThere()) {
    return {tNoDescription().what(), kNoFiles};
  }
  const auto wrapped = fields.find("wrappedMessage");
  // The library casts root buses and nothing else.
  if (wrapped != fields.end() && wrapped->second.starts_with("bad lexical cast")) {
    fields["badCast"];
  }
  for (const tWords& words : kWords) {
    if (words.code != error.code()) continue;
    if (*words.key != '\0' && !fields.contains(words.key)) continue;
    fields["configuration"] = configurationPath();
    fields["denied"] = deniedPaths();
    tSentence sentence{filled(words.what, fields), filled(words.remedy, fields)};
    if (!words.about.empty()) addSections(asked, fields);
    for (const tFaultyItem& item : words.about) sentence.about.push_back(filled(item, fields));
    return sentence;
  }
  // Where the library has a message, it is one for people.
  if (wrapped != fields.end()) return readerSentence(wrapped->second);
  if (const auto message = fields.find("message"); message != fields.end()) {
    return {ended(message->second), kCheck};
  }
  return {error.detail().empty() ? "The library refused." : ended(error.detail()), kCheck};
}

// The same with file and line, where the library's words do not tell them.
tSentence placed(tSentence sentence) {
  std::string places;
  for (const tFaultyItem& item : sentence.about) {
    if (!places.empty()) break;
    places = placesOf(item);
    const bool isBlank = item.fault == tItemFault::missing && places.starts_with('"');
    if (isBlank) sentence.what = item.item + " in section [" + item.section + "] has no value.";
  }
  if (!places.empty()) sentence.what.back() = ':';
  if (!places.empty()) sentence.what += ' ' + places + '.';
  return sentence;
}

tSentence placedSentenceOf(const varmex::Error& error, const tAsked& asked) {
  tSentence sentence = sentenceOf(error, asked);
  if (!sentence.about.empty()) return placed(sentence);
  if (error.json().find(kRefusedEncoding) == std::string::npos) return sentence;
  const std::string refused = refusedFiles();
  if (!refused.empty()) sentence.what = refused + ", which the library does not read.";
  return sentence;
}

tToldFailure shown(const tSentence& sentence) {
  return {withShownPaths(sentence.what), withShownPaths(sentence.remedy)};
}

// An exception that is none of the library's has no code.
std::string nameOf(std::string constant, std::int32_t code) {
  const auto* const named =
      std::find_if(std::begin(kCodeNames), std::end(kCodeNames),
                   [code](const tCodeName& each) { return each.code == code; });
  if (named != std::end(kCodeNames)) constant = named->name;
  const std::string number = code == 0 ? "" : std::to_string(code);
  return '(' + constant + (constant.empty() || number.empty() ? "" : " ") + number + ')';
}

std::string told(const std::string& text) { return visible(withShownPaths(text)); }

void tell(const char* severity, const varmex::Error& error) {
  const tSentence sentence = placedSentenceOf(error, {});
  std::cerr << "varmex: " << severity << told(sentence.what) << ' '
            << nameOf(visible(error.constant()), error.code()) << '\n';
  if (!sentence.remedy.empty()) std::cerr << "  " << told(sentence.remedy) << '\n';
}

}  // namespace

tNoDescription::tNoDescription()
    : std::runtime_error("There is no description, neither " + varmex::getPxiSysPath() + " nor " +
                         varmex::getPxieSysPath() + '.') {}

const char* tNoDescription::remedy() { return kNoFiles; }

bool isDescriptionThere() {
  return isThere(varmex::getPxiSysPath()) || isThere(varmex::getPxieSysPath());
}

void requireDescription() {
  if (!isDescriptionThere()) throw tNoDescription();
}

void tellFailure(const std::exception& failure) {
  if (const auto* const error = dynamic_cast<const varmex::Error*>(&failure)) {
    return tell("", *error);
  }
  std::cerr << "varmex: " << told(failure.what()) << '\n';
  if (dynamic_cast<const tNoDescription*>(&failure)) std::cerr << "  " << kNoFiles << '\n';
}

void tellWarning(const varmex::Error& warning) { tell("warning: ", warning); }

std::string sentenceFor(const varmex::Error& error) { return sentenceOf(error, {}).what; }

std::optional<tFaultyItem> faultyItemOf(const varmex::Error& error) {
  const auto about = sentenceOf(error, {}).about;
  return about.empty() ? std::nullopt : std::optional(about.front());
}

tToldFailure toldFailure(const varmex::Error& error, const tAsked& asked) {
  return shown(placedSentenceOf(error, asked));
}

tToldFailure toldLine8(const tAsked& asked) {
  tSentence sentence{kLine8Sentence, kCheck};
  if (asked.chassis && asked.bridge && asked.line) {
    sentence.about = {{tItemFault::noLine, mapSectionOf(*asked.chassis, *asked.bridge),
                       "PXI_TRIG" + std::to_string(*asked.line), "8"}};
  }
  return shown(placed(sentence));
}

std::string failureText(const std::string& constant, std::int32_t code,
                        const std::string& sentence) {
  return constant == kNoConstant ? sentence : sentence + ' ' + nameOf(constant, code);
}

std::string noneText(const std::string& what) {
  if (isDescriptionThere()) return "No " + what + ".\n";
  return "No " + what + ": there is no description, neither " + told(varmex::getPxiSysPath()) +
         "\nnor " + told(varmex::getPxieSysPath()) + ".\n  " + kNoFiles + '\n';
}

}  // namespace tool
