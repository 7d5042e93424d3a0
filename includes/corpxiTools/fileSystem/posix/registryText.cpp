#include "corpxiTools/fileSystem/posix/registryText.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "corpxiTools/fileSystem/registryKey.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kFirstLine = "Windows Registry Editor Version 5.00";
constexpr std::string_view kBlanks = " \t\r";
constexpr std::uint32_t kRegistryExpandText = 2;
constexpr std::uint32_t kRegistryBinary = 3;

char lower(char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte; }

std::string_view trim(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

void appendUtf8(std::string& text, std::uint32_t point) {
  const auto tail = [&text, point](int shift) {
    text += static_cast<char>(0x80 | (point >> shift & 0x3F));
  };
  if (point < 0x80) {
    text += static_cast<char>(point);
  } else if (point < 0x800) {
    text += static_cast<char>(0xC0 | point >> 6);
    tail(0);
  } else if (point < 0x10000) {
    text += static_cast<char>(0xE0 | point >> 12);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0 | point >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

// A lone surrogate becomes the replacement character; an odd last byte is dropped.
std::string fromUtf16(std::string_view bytes) {
  std::string text;
  const auto unit = [bytes](std::size_t n) -> std::uint32_t {
    if (n + 1 >= bytes.size()) return 0;
    return static_cast<unsigned char>(bytes[n]) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[n + 1])) << 8;
  };
  for (std::size_t n = 0; n + 1 < bytes.size(); n += 2) {
    std::uint32_t point = unit(n);
    if (point >= 0xD800 && point < 0xE000) {
      const std::uint32_t low = unit(n + 2);
      const bool isPair = point < 0xDC00 && low >= 0xDC00 && low < 0xE000;
      point = isPair ? 0x10000 + ((point & 0x3FF) << 10) + (low & 0x3FF) : 0xFFFD;
      if (isPair) n += 2;
    }
    appendUtf8(text, point);
  }
  return text;
}

std::string decode(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE"sv)) return fromUtf16(bytes.substr(2));
  if (bytes.starts_with("\xEF\xBB\xBF"sv)) bytes.remove_prefix(3);
  return std::string(bytes);
}

int hexDigit(char byte) {
  byte = lower(byte);
  if (byte >= '0' && byte <= '9') return byte - '0';
  return byte >= 'a' && byte <= 'f' ? byte - 'a' + 10 : -1;
}

// One to `most` hexadecimal digits as the whole of the text.
std::optional<std::uint32_t> readHex(std::string_view digits, std::size_t most) {
  if (digits.empty() || digits.size() > most) return std::nullopt;
  std::uint32_t number = 0;
  for (const char byte : digits) {
    const int digit = hexDigit(byte);
    if (digit < 0) return std::nullopt;
    number = number << 4 | static_cast<std::uint32_t>(digit);
  }
  return number;
}

// The text as lines, with what it takes to read an entry that spans several of them.
class tLines {
 public:
  explicit tLines(std::string_view text) : rest_(text) {}

  bool next(std::string_view& line) {
    if (rest_.empty()) return false;
    const std::size_t end = rest_.find('\n');
    line = rest_.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    return true;
  }

  std::string_view rest() const { return rest_; }
  void skipTo(std::string_view rest) { rest_ = rest; }

 private:
  std::string_view rest_;
};

// Takes a quoted text off the front of `text`; nothing when it is not closed.
std::optional<std::string> takeQuoted(std::string_view& text) {
  if (!text.starts_with('"')) return std::nullopt;
  std::string content;
  for (std::size_t n = 1; n < text.size(); ++n) {
    if (text[n] == '"') {
      text.remove_prefix(n + 1);
      return content;
    }
    if (text[n] == '\\' && n + 1 < text.size()) ++n;
    content += text[n];
  }
  return std::nullopt;
}

std::optional<std::string> takeName(std::string_view& text) {
  if (!text.starts_with('@')) return takeQuoted(text);
  text.remove_prefix(1);
  return std::string();
}

bool isTextType(std::uint32_t type) {
  return type == kRegistryText || type == kRegistryExpandText || type == kRegistryTextList;
}

// Bytes in pairs of digits between commas, a backslash at the end of a line leading to the next.
std::optional<std::string> readBytes(std::string_view digits, tLines& lines) {
  std::string bytes;
  while (true) {
    digits = trim(digits);
    const bool goesOn = digits.ends_with('\\');
    if (goesOn) digits = trim(digits.substr(0, digits.size() - 1));
    while (!digits.empty()) {
      const std::size_t comma = digits.find(',');
      const auto byte = readHex(trim(digits.substr(0, comma)), 2);
      if (!byte) return std::nullopt;
      bytes += static_cast<char>(*byte);
      digits.remove_prefix(comma == std::string_view::npos ? digits.size() : comma + 1);
    }
    if (!goesOn) return bytes;
    // What is no further bytes is a line of its own.
    const std::string_view rest = lines.rest();
    if (!lines.next(digits)) return bytes;
    if (trim(digits).find_first_not_of("0123456789abcdefABCDEF, \t\\") != std::string_view::npos) {
      lines.skipTo(rest);
      return std::nullopt;
    }
  }
}

// What follows "hex": either ":" for bytes or "(type):".
bool readHexValue(std::string_view content, tLines& lines, tRegistryTextValue& value) {
  value.type = kRegistryBinary;
  if (content.starts_with('(')) {
    const std::size_t end = content.find(')');
    if (end == std::string_view::npos) return false;
    const auto type = readHex(content.substr(1, end - 1), 8);
    if (!type) return false;
    value.type = *type;
    content.remove_prefix(end + 1);
  }
  if (!content.starts_with(':')) return false;
  auto bytes = readBytes(content.substr(1), lines);
  if (!bytes) return false;
  value.data = isTextType(value.type) ? fromUtf16(*bytes) : std::move(*bytes);
  return true;
}

bool readNumberValue(std::string_view digits, tRegistryTextValue& value) {
  const auto number = readHex(trim(digits), 8);
  if (!number) return false;
  value.type = kRegistryNumber;
  for (int shift = 0; shift < 32; shift += 8) {
    value.data += static_cast<char>(*number >> shift & 0xFF);
  }
  return true;
}

// A text may hold line ends, so it may go on over the lines that follow.
bool readTextValue(std::string_view content, tLines& lines, tRegistryTextValue& value) {
  const std::string_view rest = lines.rest();
  std::string_view whole(content.data(),
                         static_cast<std::size_t>(rest.data() + rest.size() - content.data()));
  auto text = takeQuoted(whole);
  if (!text) return false;
  const std::size_t end = whole.find('\n');
  if (!trim(whole.substr(0, end)).empty()) return false;
  if (whole.size() < rest.size()) {
    whole.remove_prefix(end == std::string_view::npos ? whole.size() : end + 1);
    lines.skipTo(whole);
  }
  value.type = kRegistryText;
  value.data = std::move(*text);
  value.data += '\0';
  return true;
}

bool readValue(std::string_view line, tLines& lines, tRegistryTextValue& value) {
  auto name = takeName(line);
  if (!name) return false;
  value.name = std::move(*name);
  line = trim(line);
  if (!line.starts_with('=')) return false;
  const std::size_t blanks = line.find_first_not_of(kBlanks, 1);
  if (blanks == std::string_view::npos) return false;
  line.remove_prefix(blanks);
  const auto hasPrefix = [line](std::string_view prefix) {
    return line.size() >= prefix.size() && sameRegistryName(line.substr(0, prefix.size()), prefix);
  };
  if (line.starts_with('"')) return readTextValue(line, lines, value);
  if (hasPrefix("dword:")) return readNumberValue(line.substr(6), value);
  if (hasPrefix("hex")) return readHexValue(line.substr(3), lines, value);
  return false;
}

// The key that a header line names, empty for any other line.
std::string_view keyOfHeader(std::string_view line) {
  line = trim(line);
  if (!line.starts_with('[') || !line.ends_with(']')) return {};
  return line.substr(1, line.size() - 2);
}

std::string lowered(std::string_view name) {
  std::string text(name);
  std::transform(text.begin(), text.end(), text.begin(), lower);
  return text;
}

// Fills a key, by name without regard to case.
class tKeyBuilder {
 public:
  explicit tKeyBuilder(tRegistryTextKey& key) : key_(key) {}

  void addSubkey(std::string_view below) {
    const std::string_view name = below.substr(0, below.find('\\'));
    if (!name.empty() && subkeys_.insert(lowered(name)).second) key_.subkeys.emplace_back(name);
  }

  void addValue(tRegistryTextValue value) {
    const auto [place, isNew] = values_.try_emplace(lowered(value.name), key_.values.size());
    if (isNew) {
      key_.values.push_back(std::move(value));
    } else {
      key_.values[place->second] = std::move(value);
    }
  }

 private:
  tRegistryTextKey& key_;
  std::unordered_set<std::string> subkeys_;
  std::unordered_map<std::string, std::size_t> values_;  // to the index of the value
};

}  // namespace

bool sameRegistryName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return lower(x) == lower(y); });
}

bool readRegistryText(std::string_view text, std::string_view path, tRegistryTextKey& key) {
  const std::string decoded = decode(text);
  tLines lines(decoded);
  std::string_view line;
  if (!lines.next(line) || trim(line) != kFirstLine) return false;
  tKeyBuilder builder(key);
  bool found = false;
  bool inside = false;
  while (lines.next(line)) {
    line = line.substr(std::min(line.size(), line.find_first_not_of(kBlanks)));
    if (line.starts_with('[')) {
      const std::string_view name = keyOfHeader(line);
      inside = sameRegistryName(name, path);
      const bool isBelow = name.size() > path.size() && name[path.size()] == '\\' &&
                           sameRegistryName(name.substr(0, path.size()), path);
      if (isBelow) builder.addSubkey(name.substr(path.size() + 1));
      found = found || inside || isBelow;
    } else {
      // Of another key, too: its texts may hold what looks like a header.
      tRegistryTextValue value;
      if (readValue(line, lines, value) && inside) builder.addValue(std::move(value));
    }
  }
  return found;
}

}  // namespace varmex::inline nCORPXITOOLS000
