#include "tools/varmex/saved/registryValues.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

#include "corpxiTools/fileSystem/registryKey.h"
#include "tools/varmex/saved/bytes.h"
#include "tools/varmex/text/utf8.h"

namespace tool {

namespace {

using varmex::kRegistryNumber;
using varmex::kRegistryText;
using varmex::kRegistryTextList;
using varmex::tRegistryKey;
using varmex::tRegistryRoot;
using varmex::tRegistryView;

constexpr std::uint32_t kExpandText = 2;
constexpr std::size_t kMostValues = 1000;
constexpr std::uint32_t kMostBytes = 1 << 20;  // of a value
constexpr std::uint32_t kNameSize = 16384;     // as long as the system lets names be
constexpr unsigned kMostLevels = 8;            // of the keys of trigger managers

struct tWanted {
  const char* key;
  tRegistryView view;
  const char* keyInView;  // by which it is found in the view of 64 bits
  const char* value;
  unsigned levels;  // of keys below that have the value as well
};

constexpr tWanted kWanted[] = {
    {"SOFTWARE\\PXISA\\CurrentVersion", tRegistryView::process, "SOFTWARE\\PXISA\\CurrentVersion",
     "ChassisDescriptionFilePath", 0},
    {"SOFTWARE\\PXISA\\Services\\Trigger Managers", tRegistryView::process,
     "SOFTWARE\\PXISA\\Services\\Trigger Managers", "Library", kMostLevels},
    {"SOFTWARE\\Corvane\\COR-DUNMOR", tRegistryView::process, "SOFTWARE\\Corvane\\COR-DUNMOR",
     "TriggerManagersNoForward", 0},
    {"SOFTWARE\\Corvane\\COR-VARMEX", tRegistryView::bits32,
     "SOFTWARE\\WOW6432Node\\Corvane\\COR-VARMEX", "PXITrigUseStableBusNameFormat", 0},
};

bool isSameName(const std::string& a, const std::string& b) {
  const auto lower = [](char byte) { return byte >= 'A' && byte <= 'Z' ? byte | 0x20 : byte; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char left, char right) { return lower(left) == lower(right); });
}

// The names of what a key holds, as far as `next` answers them.
template <class Next>
std::vector<std::string> namesBy(Next next) {
  std::vector<std::string> names;
  std::string buffer(kNameSize, '\0');
  for (std::uint32_t n = 0; n < kMostValues && next(n, buffer.data()) == 0; ++n) {
    names.emplace_back(buffer.c_str());
  }
  return names;
}

// A name is kept as it is spelled, which the library looks at.
void takeValue(const tRegistryKey& key, const std::string& path, const char* wanted,
               tRegistryValues& values) {
  const auto names = namesBy([&key](std::uint32_t n, char* name) {
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    return key.enumValue(n, name, kNameSize, type, nullptr, size);
  });
  for (const std::string& name : names) {
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    if (!isSameName(name, wanted)) continue;
    if (key.queryValue(name.c_str(), type, nullptr, size) != 0 || size > kMostBytes) continue;
    std::string data(size, '\0');
    if (key.queryValue(name.c_str(), type, data.data(), size) != 0) continue;
    data.resize(size);
    values.push_back({path, name, type, std::move(data)});
  }
}

void takeKey(const tWanted& wanted, const std::string& below, unsigned level,
             tRegistryValues& values) {
  tRegistryKey key;
  if (values.size() >= kMostValues) return;
  if (key.open(tRegistryRoot::localMachine, wanted.key + below, wanted.view) != 0) return;
  takeValue(key, wanted.keyInView + below, wanted.value, values);
  if (level == wanted.levels) return;
  const auto subkeys =
      namesBy([&key](std::uint32_t n, char* name) { return key.enumKey(n, name, kNameSize); });
  for (const std::string& subkey : subkeys) {
    takeKey(wanted, below + '\\' + subkey, level + 1, values);
  }
}

// The texts of a list, each of which ends with a NUL, as the list does; nothing for other data.
std::optional<std::vector<std::string>> textsOf(const std::string& data) {
  std::vector<std::string> texts;
  std::size_t begin = 0;
  while (begin < data.size() && data[begin] != '\0') {
    const std::size_t end = data.find('\0', begin);
    if (end == std::string::npos) return std::nullopt;
    texts.push_back(data.substr(begin, end - begin));
    begin = end + 1;
  }
  if (begin + 1 != data.size()) return std::nullopt;
  return texts;
}

std::string bytesOfNumber(std::uint64_t number) {
  std::string bytes;
  for (int n = 0; n < 4; ++n) bytes += static_cast<char>(number >> 8 * n & 0xFF);
  return bytes;
}

tJson jsonOf(const tRegistryValue& value) {
  tJson json = {{"key", jsonOfBytes(value.key)}, {"name", jsonOfBytes(value.name)}};
  const std::string& data = value.data;
  const auto texts = value.type == kRegistryTextList ? textsOf(data) : std::nullopt;
  if (value.type == kRegistryText && !data.empty() && data.find('\0') == data.size() - 1) {
    json["text"] = jsonOfBytes(data.substr(0, data.size() - 1));
  } else if (value.type == kRegistryNumber && data.size() == 4) {
    std::uint32_t number = 0;
    for (std::size_t n = 4; n-- > 0;) number = number << 8 | static_cast<unsigned char>(data[n]);
    json["number"] = number;
  } else if (texts) {
    json["texts"] = tJson::array();
    for (const std::string& text : *texts) json["texts"].push_back(jsonOfBytes(text));
  } else {
    json["type"] = value.type;
    json["data"] = jsonOfBytes(data);
  }
  return json;
}

std::uint32_t numberOf(const tJson& json) {
  if (!json.is_number_unsigned() || json.get<std::uint64_t>() > 0xFFFFFFFF) {
    throw std::runtime_error("no number of 32 bits");
  }
  return json.get<std::uint32_t>();
}

// Without what ends a line or a header of the registry's text.
std::string plainBytesOf(const tJson& entry, const char* member) {
  if (!entry.contains(member)) throw std::runtime_error(std::string("no ") + member);
  std::string bytes = bytesOfJson(entry[member]);
  const bool isPlain = std::all_of(bytes.begin(), bytes.end(), [](char byte) {
    return static_cast<unsigned char>(byte) >= ' ';
  });
  if (!isPlain || bytes.size() >= kNameSize) throw std::runtime_error("no name of a key or value");
  return bytes;
}

void takeData(const tJson& entry, tRegistryValue& value) {
  if (entry.contains("text")) {
    value.type = kRegistryText;
    value.data = bytesOfJson(entry["text"]) + '\0';
  } else if (entry.contains("number")) {
    value.type = kRegistryNumber;
    value.data = bytesOfNumber(numberOf(entry["number"]));
  } else if (entry.contains("texts") && entry["texts"].is_array()) {
    value.type = kRegistryTextList;
    for (const tJson& text : entry["texts"]) value.data += bytesOfJson(text) + '\0';
    value.data += '\0';
  } else if (entry.contains("type") && entry.contains("data")) {
    value.type = numberOf(entry["type"]);
    value.data = bytesOfJson(entry["data"]);
  } else {
    throw std::runtime_error("a value without text, number, texts, or type and data");
  }
}

void appendQuoted(std::string& text, const std::string& bytes) {
  text += '"';
  for (const char byte : bytes) {
    if (byte == '"' || byte == '\\') text += '\\';
    text += byte;
  }
  text += '"';
}

// UTF-8 as UTF-16LE; a byte that is none becomes U+FFFD.
std::string toUtf16(std::string_view text) {
  std::string wide;
  const auto add = [&wide](std::uint32_t unit) {
    wide += static_cast<char>(unit & 0xFF);
    wide += static_cast<char>(unit >> 8);
  };
  for (std::size_t n = 0; n < text.size();) {
    const auto first = static_cast<unsigned char>(text[n]);
    const std::size_t tail = first < 0xC2 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    if (first >= 0x80 && (tail == 0 || !isUtf8(text.substr(n, tail + 1)))) {
      add(0xFFFD);
      ++n;
      continue;
    }
    std::uint32_t point = tail == 0 ? first : first & (0x3FU >> tail);
    for (std::size_t m = 1; m <= tail; ++m) {
      point = point << 6 | (static_cast<unsigned char>(text[n + m]) & 0x3FU);
    }
    if (point > 0xFFFF) {
      add(0xD800 + ((point - 0x10000) >> 10));
      add(0xDC00 + ((point - 0x10000) & 0x3FF));
    } else {
      add(point);
    }
    n += tail + 1;
  }
  return wide;
}

void appendHex(std::string& text, std::uint32_t type, const std::string& bytes) {
  constexpr const char* kHex = "0123456789abcdef";
  text += "hex(";
  for (int shift = 28; shift >= 0; shift -= 4) text += kHex[type >> shift & 0xF];
  text += "):";
  for (std::size_t n = 0; n < bytes.size(); ++n) {
    if (n > 0) text += ',';
    text += kHex[static_cast<unsigned char>(bytes[n]) >> 4];
    text += kHex[static_cast<unsigned char>(bytes[n]) & 0xF];
  }
}

}  // namespace

tRegistryValues takeRegistryValues() {
  tRegistryValues values;
  for (const tWanted& wanted : kWanted) takeKey(wanted, "", 0, values);
  return values;
}

tJson jsonOfRegistry(const tRegistryValues& values) {
  tJson list = tJson::array();
  for (const tRegistryValue& value : values) list.push_back(jsonOf(value));
  return list;
}

tRegistryValues registryOfJson(const tJson& json) {
  if (!json.is_array() || json.size() > kMostValues) {
    throw std::runtime_error("no list of at most " + std::to_string(kMostValues) + " values");
  }
  tRegistryValues values;
  for (const tJson& entry : json) {
    if (!entry.is_object()) throw std::runtime_error("an entry that is no object");
    tRegistryValue& value = values.emplace_back();
    value.key = plainBytesOf(entry, "key");
    value.name = plainBytesOf(entry, "name");
    takeData(entry, value);
    if (value.data.size() > kMostBytes) throw std::runtime_error("a value that is too long");
  }
  return values;
}

std::string registryTextOf(const tRegistryValues& values) {
  std::string text = "Windows Registry Editor Version 5.00\n";
  std::string key;
  for (const tRegistryValue& value : values) {
    if (value.key != key) text += "\n[HKEY_LOCAL_MACHINE\\" + value.key + "]\n";
    key = value.key;
    appendQuoted(text, value.name);
    text += '=';
    const bool isWide = value.type == kExpandText || value.type == kRegistryTextList;
    if (value.type == kRegistryText) {
      appendQuoted(text, value.data.substr(0, value.data.size() - value.data.ends_with('\0')));
    } else {
      appendHex(text, value.type, isWide ? toUtf16(value.data) : value.data);
    }
    text += '\n';
  }
  return text;
}

}  // namespace tool
