#include "tools/varmex/saved/savedFile.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <stdexcept>

#include "tools/varmex/saved/bytes.h"

namespace tool {

namespace {

constexpr const char* kVersionKey = "varmex saved installation";
constexpr int kVersion = 1;
constexpr int kMostDepth = 8;
constexpr std::size_t kMostMembers = 100;  // of an object: each is looked for among all before it
constexpr std::size_t kMostElements = 1000000;

constexpr const char* kKeys[] = {kVersionKey, "taken", "host",     "platform",
                                 "version",   "files", "registry", "chassisDescriptionFiles",
                                 "pci"};

// Parses with bounds that the parser itself does not have: no deep nesting, no masses of elements,
// each of which takes much more memory than text, no key twice, and nothing is kept below keys of
// later versions.
tJson parse(std::string_view text) {
  std::vector<std::set<std::string>> keys;
  std::size_t count = 0;
  const auto accept = [&](int depth, tJson::parse_event_t event, tJson& parsed) {
    const bool isElement = event == tJson::parse_event_t::value ||
                           event == tJson::parse_event_t::array_start ||
                           event == tJson::parse_event_t::object_start;
    if (isElement && ++count > kMostElements) throw std::runtime_error("it has too many elements");
    if (depth > kMostDepth) throw std::runtime_error("it is nested too deeply");
    if (event == tJson::parse_event_t::object_start) keys.emplace_back();
    if (event == tJson::parse_event_t::object_end) keys.pop_back();
    if (event != tJson::parse_event_t::key) return true;
    const auto& key = parsed.get_ref<const std::string&>();
    if (!keys.back().insert(key).second) throw std::runtime_error("\"" + key + "\" stands twice");
    if (keys.back().size() > kMostMembers) {
      throw std::runtime_error("an object has too many members");
    }
    return keys.size() > 1 || std::find(std::begin(kKeys), std::end(kKeys), key) != std::end(kKeys);
  };
  try {
    return tJson::parse(text, accept);
  } catch (const tJson::parse_error& error) {
    throw std::runtime_error("it is no JSON from byte " + std::to_string(error.byte) + " on");
  } catch (const tJson::out_of_range&) {
    throw std::runtime_error("a number is too large");
  }
}

// What `read` makes of a member; where it fails, the message names the member.
template <class Read>
auto readMember(const tJson& document, const char* key, Read read) {
  try {
    if (!document.contains(key)) throw std::runtime_error("it is missing");
    return read(document[key]);
  } catch (const std::exception& error) {
    throw std::runtime_error(std::string(key) + ": " + error.what());
  }
}

std::string textMember(const tJson& document, const char* key) {
  return readMember(document, key, [](const tJson& value) {
    if (!value.is_string()) throw std::runtime_error("it is no text");
    return value.get<std::string>();
  });
}

std::vector<tFileContent> filesOf(const tJson& json) {
  if (!json.is_object()) throw std::runtime_error("it is no object");
  std::vector<tFileContent> files;
  for (const auto& [path, content] : json.items()) {
    // Nothing else is ever written, so no path can lead anywhere else.
    if (std::find(std::begin(kSavedPaths), std::end(kSavedPaths), path) == std::end(kSavedPaths)) {
      throw std::runtime_error("there is no place for " + path);
    }
    files.push_back({path, readMember(json, path.c_str(), bytesOfJson)});
  }
  return files;
}

std::vector<tFileContent> chassisFilesOf(const tJson& json) {
  if (!json.is_array() || json.size() > kMostChassisFiles) {
    throw std::runtime_error("no list of at most " + std::to_string(kMostChassisFiles) + " files");
  }
  std::vector<tFileContent> files;
  for (const tJson& file : json) {
    files.push_back(
        {readMember(file, "path", bytesOfJson), readMember(file, "content", bytesOfJson)});
  }
  return files;
}

// What a page holds in its element; all else is the document itself.
std::string_view documentIn(std::string_view text) {
  constexpr std::string_view kPageBegin = "<!doctype html>";
  if (!text.starts_with(kPageBegin)) return text;
  const std::size_t element = text.find(std::string(kSavedAttributes) + '>');
  if (element == text.npos) throw std::runtime_error("it is a page without an installation");
  text.remove_prefix(text.find('>', element) + 1);
  return text.substr(0, text.find("</script>"));
}

}  // namespace

std::string textOf(const tSavedInstallation& saved) {
  tJson json = {{kVersionKey, kVersion},
                {"taken", saved.taken},
                {"host", saved.host},
                {"platform", saved.platform},
                {"version", saved.version},
                {"files", tJson::object()},
                {"registry", jsonOfRegistry(saved.registry)},
                {"chassisDescriptionFiles", tJson::array()}};
  for (const tFileContent& file : saved.files) json["files"][file.path] = jsonOfBytes(file.bytes);
  for (const tFileContent& file : saved.chassisFiles) {
    json["chassisDescriptionFiles"].push_back(
        {{"path", jsonOfBytes(file.path)}, {"content", jsonOfBytes(file.bytes)}});
  }
  if (saved.pci) json["pci"] = jsonOfPciTree(*saved.pci);
  return json.dump(2, ' ', false, tJson::error_handler_t::replace) + '\n';
}

tSavedInstallation readSaved(std::string_view text) {
  if (text.size() > kMostSavedBytes) throw std::runtime_error("it has more than 64 MB");
  const tJson json = parse(documentIn(text));
  if (!json.is_object() || !json.contains(kVersionKey)) {
    throw std::runtime_error(std::string("it has no \"") + kVersionKey + '"');
  }
  if (json[kVersionKey] != kVersion) {
    throw std::runtime_error("it is of another version than " + std::to_string(kVersion));
  }
  tSavedInstallation saved;
  saved.taken = textMember(json, "taken");
  saved.host = textMember(json, "host");
  saved.platform = textMember(json, "platform");
  saved.version = textMember(json, "version");
  saved.files = readMember(json, "files", filesOf);
  saved.registry = readMember(json, "registry", registryOfJson);
  saved.chassisFiles = readMember(json, "chassisDescriptionFiles", chassisFilesOf);
  if (json.contains("pci")) saved.pci = readMember(json, "pci", pciTreeOfJson);
  return saved;
}

}  // namespace tool
