#include "tools/varmex/text/failures.h"

#include <filesystem>
#include <iostream>
#include <map>

#include "corpxiTools/fileSystem/folders.h"
#include "corpxiTools/fileSystem/utils.h"
#include "ostrel/quarks/status.h"
#include "tools/varmex/text/columns.h"

namespace tool {

namespace {

namespace fs = std::filesystem;

// What happened and what to do about it.
struct tSentence {
  std::string what;
  std::string remedy;
};

using tFields = std::map<std::string, std::string>;

tFields fieldsOf(const varmex::Error& error) {
  tFields fields;
  for (const auto& [key, value] : varmex::detail::flattenJson(error.json())) {
    fields.try_emplace(key, value);
  }
  return fields;
}

std::string configurationPath() {
  tStatusRecord status = varmex_makeStatus();
  std::string path = varmex::getConfigurationPath(status);
  varmex_releaseStatus(&status);
  return path;
}

bool isThere(const std::string& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

tSentence unknownItem(const tFields& fields) {
  const auto field = [&](const char* key) {
    const auto found = fields.find(key);
    return found == fields.end() ? std::string() : found->second;
  };
  const std::string remedy = "\"varmex show\" lists what there is.";
  const std::string type = field("type");
  if (type == "slot") {
    return {"Chassis " + field("chassisNum") + " has no slot " + field("slotNum") + ".", remedy};
  }
  if (type == "chassis") return {"There is no chassis " + field("chassisNumber") + ".", remedy};
  return {"No module has that PCI address.", remedy};
}

// The system refused something; most often the folder of the description is not there.
tSentence systemFault(const tFields& fields) {
  const std::string folder = varmex::getWindowsFolder();
  if (!isThere(folder)) {
    return {"The folder of the description, " + folder + ", is not there.",
            "Make it, even if it stays empty, or see \"No description\" in the guide."};
  }
  const auto reason = fields.find("string");
  return {"The system refused: " +
              (reason == fields.end() ? std::string("no reason given") : reason->second) + ".",
          ""};
}

tSentence sentenceOf(const varmex::Error& error) {
  const tFields fields = fieldsOf(error);
  const auto path = fields.find("path");
  const auto wrapped = fields.find("wrappedMessage");
  switch (error.code()) {
    case varmex_errorUnknownItem: return unknownItem(fields);
    case varmex_errorLockTimeout:
      return {"Another program kept " + configurationPath() + " locked for 10 seconds.",
              "Try again when it is done; \"fuser " + configurationPath() + "\" names it."};
    case varmex_pxiSystemDescriptionInaccessible:
      if (path == fields.end()) break;
      return {path->second + " could not be opened for 10 seconds.",
              "Make it a regular file that you have the right to read."};
    case ostrelerr_insufficientPermissions:
    case varmex_fileAccessDenied:
      return {"You have no right to look at " + varmex::getPxiSysPath() + ", " +
                  varmex::getPxieSysPath() + " or " + configurationPath() + ".",
              "Grant the right to read them and to enter their folders."};
    case ostrelerr_osFault: return systemFault(fields);
    case varmex_errorMemoryFull:
    case ostrelerr_memoryFull: return {"There is not enough memory.", "Try again with more."};
    case telmar_ra_errorResourcesInUse:
      return {"The terminal is held under another token.", "Wait, or use the holder's token."};
    case varmex_errorTriggerManagerLibraryNotFound:
      return {"The registry names no library for the trigger manager.",
              "Install the trigger manager's software."};
    case varmex_warningFailedSync:
      return {"The description could not be brought up to date and is shown as it stands.",
              "Install or repair the PXI service library."};
    case varmex_errorNotConnected:
    case varmex_errorStarController:
      return {"The slot does not have this trigger line.",
              "\"varmex terminals\" lists those it has."};
    default: break;
  }
  const std::string remedy = "Run \"varmex check\" to see what to mend.";
  if (wrapped != fields.end()) return {wrapped->second + ".", remedy};
  if (error.code() == varmex_errorInformationConflict) {
    return {"The description contradicts itself: " + error.detail() + ".", remedy};
  }
  return {error.detail().empty() ? "The library refused." : error.detail() + ".", remedy};
}

std::string nameOf(const std::string& constant, std::int32_t code) {
  return '(' + (constant.empty() ? std::string() : constant + ' ') + std::to_string(code) + ')';
}

void tell(const char* severity, const varmex::Error& error) {
  const tSentence sentence = sentenceOf(error);
  std::cerr << "varmex: " << severity << visible(sentence.what) << ' '
            << nameOf(visible(error.constant()), error.code()) << '\n';
  if (!sentence.remedy.empty()) std::cerr << "  " << visible(sentence.remedy) << '\n';
}

// What the library passes on from its reader of files is a sentence of its own.
std::string plainDetail(const std::string& detail) {
  const std::string mark = "wrappedMessage: ";
  return detail.starts_with(mark) ? detail.substr(mark.size()) : detail;
}

}  // namespace

void tellFailure(const std::exception& failure) {
  if (const auto* const error = dynamic_cast<const varmex::Error*>(&failure)) {
    tell("", *error);
  } else {
    std::cerr << "varmex: " << visible(failure.what()) << '\n';
  }
}

void tellWarning(const varmex::Error& warning) { tell("warning: ", warning); }

std::string failureText(const std::string& constant, std::int32_t code, const std::string& detail) {
  const std::string name = constant.empty() ? "unnamed" : constant;
  const std::string kind = code == 0 ? name : name + ' ' + std::to_string(code);
  return detail.empty() ? kind : plainDetail(detail) + " (" + kind + ')';
}

std::string noChassisText(const std::string& pxiSys, const std::string& pxieSys) {
  if (isThere(pxiSys) || isThere(pxieSys)) return "No chassis.\n";
  return "No chassis: there is no description, neither " + visible(pxiSys) + "\nnor " +
         visible(pxieSys) +
         ".\n"
         "  A resource manager writes them. To look at another root, set VARMEX_FSROOT to it;\n"
         "  \"varmex make FOLDER express:18\" writes a simulated installation into one.\n";
}

}  // namespace tool
