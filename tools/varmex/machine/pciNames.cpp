#include "tools/varmex/machine/pciNames.h"

#include <sstream>

#include "corpxiTools/fileSystem/fileBytes.h"

namespace tool {

namespace {

constexpr const char* kPlaces[] = {"/usr/share/misc/pci.ids", "/usr/share/hwdata/pci.ids"};
constexpr std::uint64_t kMostBytes = 16 << 20;

// Empty for what is no regular file, or a larger one than such a list is.
std::string contentOf(const std::string& path) {
  varmex::tInputFile file(path.c_str());
  varmex::tFileBytes content;
  if (!file.isOpen() || file.size() > kMostBytes || !varmex::readWholeFile(file, 0, content)) {
    return {};
  }
  return {content.bytes.get(), content.size};
}

// Four digits of "0x10b5".
std::string digitsOf(const tPciDevice& device, const char* name) {
  const std::string text = device.text(name);
  return text.starts_with("0x") && text.size() == 6 ? text.substr(2) : "";
}

}  // namespace

// A line is "10b5  Name" for a vendor and, behind it, "<tab>8747  Name" for each of its devices.
void tPciNames::load() {
  isLoaded_ = true;
  std::string content;
  for (const std::string& root : {root_, std::string()}) {
    for (const char* const place : kPlaces) {
      if (content.empty()) content = contentOf(root + place);
    }
  }
  std::istringstream lines(std::move(content));
  std::string vendor;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("C ")) break;  // classes follow
    const bool isDevice = line.starts_with('\t');
    const std::size_t begin = isDevice ? 1 : 0;
    if (line.size() < begin + 7 || line[begin] == '#' || line[begin] == '\t') continue;
    const std::string number = line.substr(begin, 4);
    if (!isDevice) vendor = number;
    names_[isDevice ? vendor + ':' + number : number] = line.substr(begin + 6);
  }
}

std::string tPciNames::nameOf(const tPciDevice& device) {
  if (!isLoaded_) load();
  const std::string vendor = digitsOf(device, "vendor");
  const std::string number = vendor + ':' + digitsOf(device, "device");
  std::string name;
  for (const std::string& key : {vendor, number}) {
    if (const auto found = names_.find(key); found != names_.end()) name += found->second + ' ';
  }
  return name + '[' + number + ']';
}

}  // namespace tool
