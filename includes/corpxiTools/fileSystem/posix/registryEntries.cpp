#include "corpxiTools/fileSystem/posix/registryEntries.h"

#include <algorithm>
#include <optional>
#include <string>

#include "corpxiTools/fileSystem/posix/registryNames.h"
#include "corpxiTools/fileSystem/registryKey.h"
#include "corpxiTools/observer.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kFirstLine = "Windows Registry Editor Version 5.00";
constexpr std::string_view kBlanks = " \t\r";
constexpr std::uint32_t kRegistryExpandText = 2;
constexpr std::uint32_t kRegistryBinary = 3;

std::string_view trimFront(std::string_view text) {
  return text.substr(std::min(text.size(), text.find_first_not_of(kBlanks)));
}

std::string_view trim(std::string_view text) {
  text = trimFront(text);
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// Whether nothing more follows but a comment.
bool isOver(std::string_view text) {
  text = trimFront(text);
  return text.empty() || text.starts_with(';');
}

std::string_view withoutComment(std::string_view text) {
  return trim(text.substr(0, text.find(';')));
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
  text.reserve(bytes.size() / 2);
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

std::string_view viewOf(const tFileBytes& content) { return {content.bytes.get(), content.size}; }

void decodeUtf16(tFileBytes& content) {
  const std::string text = fromUtf16(viewOf(content));
  content.bytes = std::make_unique_for_overwrite<char[]>(text.size());
  content.size = text.copy(content.bytes.get(), text.size());
}

// One to `most` hexadecimal digits as the whole of the text.
std::optional<std::uint32_t> readHex(std::string_view digits, std::size_t most) {
  if (digits.empty() || digits.size() > most) return std::nullopt;
  std::uint32_t number = 0;
  for (const char byte : digits) {
    const std::size_t digit = "0123456789abcdef"sv.find(lowerCase(byte));
    if (digit == std::string_view::npos) return std::nullopt;
    number = number << 4 | static_cast<std::uint32_t>(digit);
  }
  return number;
}

// Where a text that begins with a quote closes it.
std::size_t findClosingQuote(std::string_view text) {
  std::size_t n = 1;
  while (n < text.size() && text[n] != '"') n += text[n] == '\\' ? 2 : 1;
  return n < text.size() ? n : std::string_view::npos;
}

bool isTextType(std::uint32_t type) {
  return type == kRegistryText || type == kRegistryExpandText || type == kRegistryTextList;
}

// What stands between the brackets of a header line, empty without a closing one. A name may hold
// brackets: that one closes behind which nothing but a comment stands.
std::string_view contentOfHeader(std::string_view line) {
  for (std::size_t end = 0; (end = line.find(']', end)) != std::string_view::npos; ++end) {
    if (isOver(line.substr(end + 1))) return line.substr(1, end - 1);
  }
  return {};
}

class tReader {
 public:
  explicit tReader(tFileBytes& content) : begin_(content.bytes.get()), rest_(viewOf(content)) {
    if (rest_.starts_with("\xEF\xBB\xBF"sv)) rest_.remove_prefix(3);
  }

  void readInto(tRegistryEntries& entries) {
    std::string_view line;
    if (!next(line) || trim(line) != kFirstLine) return;
    bool isInside = false;  // of a section that takes values
    while (next(line)) {
      line = trimFront(line);
      tRegistryTextValue value;
      if (line.starts_with('[')) {
        isInside = takeHeader(contentOfHeader(line), entries);
      } else if (readValue(line, value) && isInside) {
        // Values of no section are read, too: their texts may hold what looks like a header.
        entries.values.push_back(value);
        ++entries.sections.back().valueCount;
      }
    }
  }

 private:
  bool next(std::string_view& line) {
    if (rest_.empty()) return false;
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return true;
  }

  // A part of the content, to be written over.
  char* writable(std::string_view part) { return begin_ + (part.data() - begin_); }

  // False for a header that is none, and for one that takes no values. A root can't be taken away.
  bool takeHeader(std::string_view path, tRegistryEntries& entries) {
    const bool isDeletion = path.starts_with('-');
    if (isDeletion) path.remove_prefix(1);
    const std::size_t rootEnd = std::min(path.find('\\'), path.size());
    const std::string_view subkey = path.substr(rootEnd);
    if (rootEnd == 0 || subkey.starts_with("\\\\"sv)) return false;
    path = {path.data(), rootEnd + tidyBackslashes(subkey)};
    if (isDeletion && path.size() == rootEnd) return false;
    const std::size_t order = entries.sections.size() + 1;
    entries.sections.push_back({path, order, entries.values.size(), 0, isDeletion});
    return !isDeletion;
  }

  // Between keys any number of backslashes counts as one, at the end none. What is left of them.
  std::size_t tidyBackslashes(std::string_view subkey) {
    char* const begin = writable(subkey);
    char* end = std::unique(begin, begin + subkey.size(),
                            [](char a, char b) { return a == '\\' && b == '\\'; });
    if (end != begin && end[-1] == '\\') --end;
    return static_cast<std::size_t>(end - begin);
  }

  bool readValue(std::string_view line, tRegistryTextValue& value) {
    if (!takeName(line, value.name)) return false;
    line = trimFront(line);
    if (!line.starts_with('=')) return false;
    line = trimFront(line.substr(1));
    const auto hasPrefix = [line](std::string_view prefix) {
      return sameRegistryName(line.substr(0, prefix.size()), prefix);
    };
    if (line.starts_with('-')) return isOver(line.substr(1));
    if (line.starts_with('"')) return readText(line, value);
    if (hasPrefix("dword:"sv)) return readNumber(line, value);
    return hasPrefix("hex"sv) && readHexValue(line, value);
  }

  // Takes the name off the front of the line.
  bool takeName(std::string_view& line, std::string_view& name) {
    if (line.starts_with('@')) {
      line.remove_prefix(1);
      return true;
    }
    const std::size_t end = line.starts_with('"') ? findClosingQuote(line) : std::string_view::npos;
    if (end == std::string_view::npos) return false;
    name = unescape(line.substr(1, end - 1));
    line.remove_prefix(end + 1);
    return true;
  }

  std::string_view unescape(std::string_view text) {
    char* const begin = writable(text);
    char* end = begin;
    for (std::size_t n = 0; n < text.size(); ++n) {
      if (text[n] == '\\') ++n;
      *end++ = text[n];
    }
    return {begin, end};
  }

  // A text may hold line ends, so it may go on over the lines that follow.
  bool readText(std::string_view line, tRegistryTextValue& value) {
    const std::string_view whole(line.data(), endOfContent());
    const std::size_t quote = findClosingQuote(whole);
    if (quote == std::string_view::npos) return false;
    const std::size_t end = std::min(whole.find('\n', quote), whole.size());
    if (!isOver(whole.substr(quote + 1, end - quote - 1))) return false;
    rest_ = whole.substr(std::min(end + 1, whole.size()));
    value.type = kRegistryText;
    const std::string_view text = unescape(whole.substr(1, quote - 1));
    *writable(text.substr(text.size())) = '\0';
    value.data = {text.data(), text.size() + 1};
    return true;
  }

  bool readNumber(std::string_view line, tRegistryTextValue& value) {
    const auto number = readHex(withoutComment(line.substr("dword:"sv.size())), 8);
    if (!number) return false;
    value.type = kRegistryNumber;
    char* const data = writable(line);
    for (int n = 0; n < 4; ++n) data[n] = static_cast<char>(*number >> 8 * n & 0xFF);
    value.data = {data, 4};
    return true;
  }

  // "hex" and then either ":" for bytes or "(type):".
  bool readHexValue(std::string_view line, tRegistryTextValue& value) {
    char* const data = writable(line);
    line.remove_prefix("hex"sv.size());
    value.type = kRegistryBinary;
    if (line.starts_with('(')) {
      const std::size_t end = std::min(line.find(')'), line.size());
      const auto type = readHex(line.substr(1, end - 1), 8);
      if (!type) return false;
      value.type = *type;
      line.remove_prefix(std::min(end + 1, line.size()));
    }
    if (!line.starts_with(':') || !readBytes(line.substr(1))) return false;
    const std::string text = isTextType(value.type) ? fromUtf16(bytes_) : bytes_;
    value.data = {data, text.copy(data, text.size())};
    return true;
  }

  // Bytes in pairs of digits between commas, a backslash at the end of a line leading to the next.
  bool readBytes(std::string_view digits) {
    bytes_.clear();
    for (digits = withoutComment(digits);;) {
      const bool goesOn = digits.ends_with('\\');
      if (goesOn) digits.remove_suffix(1);
      if (!addBytes(trim(digits))) return false;
      if (!goesOn) return true;
      if (!nextOfBytes(digits)) return false;
    }
  }

  bool addBytes(std::string_view digits) {
    while (!digits.empty()) {
      const std::size_t comma = std::min(digits.find(','), digits.size());
      const auto byte = readHex(trim(digits.substr(0, comma)), 2);
      if (!byte) return false;
      bytes_ += static_cast<char>(*byte);
      digits.remove_prefix(std::min(comma + 1, digits.size()));
    }
    return true;
  }

  // Blank lines and comments may stand in between. What is no further bytes is a line of its own.
  bool nextOfBytes(std::string_view& digits) {
    std::string_view behind = rest_;
    digits = {};
    while (next(digits)) {
      digits = withoutComment(digits);
      if (!digits.empty()) break;
      behind = rest_;
    }
    constexpr std::string_view kBytes = "0123456789abcdefABCDEF, \t\\";
    if (!digits.empty() && digits.find_first_not_of(kBytes) == std::string_view::npos) return true;
    rest_ = behind;
    return false;
  }

  const char* endOfContent() const { return rest_.data() + rest_.size(); }

  char* begin_;
  std::string_view rest_;  // behind the line that is being read
  std::string bytes_;      // of the value that is being read
};

}  // namespace

tRegistryEntries readRegistryEntries(tFileBytes& content) {
  tRegistryEntries entries;
  if (viewOf(content).starts_with("\xFF\xFE"sv)) decodeUtf16(content);
  observeText(viewOf(content));
  tReader(content).readInto(entries);
  return entries;
}

}  // namespace varmex::inline nCORPXITOOLS000
