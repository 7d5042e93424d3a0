#include "tools/varmex/saved/bytes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>

#include "tools/varmex/text/utf8.h"

namespace tool {

namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 0xFF;
constexpr std::ptrdiff_t kMostLines = 100000;  // of a list; nobody reads more

constexpr std::array<std::uint8_t, 256> valuesOfDigits() {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::size_t n = 0; n < kDigits.size(); ++n) {
    values[static_cast<unsigned char>(kDigits[n])] = static_cast<std::uint8_t>(n);
  }
  return values;
}

constexpr std::array<std::uint8_t, 256> kValues = valuesOfDigits();

[[noreturn]] void refuseBase64() { throw std::runtime_error("broken base64"); }

std::string fromBase64(std::string_view text) {
  if (text.size() % 4 != 0) refuseBase64();
  for (int n = 0; n < 2 && text.ends_with('='); ++n) text.remove_suffix(1);
  std::string bytes;
  bytes.reserve(text.size() * 3 / 4);
  std::uint32_t rest = 0;
  unsigned bits = 0;
  for (const char digit : text) {
    const std::uint8_t value = kValues[static_cast<unsigned char>(digit)];
    if (value == kNoDigit) refuseBase64();
    rest = (rest << 6 | value) & 0xFFFF;
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    bytes += static_cast<char>(rest >> bits & 0xFF);
  }
  if ((rest & ((1U << bits) - 1)) != 0) refuseBase64();
  return bytes;
}

}  // namespace

std::string toBase64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t n = 0; n < bytes.size(); n += 3) {
    std::uint32_t group = 0;
    for (std::size_t m = 0; m < 3; ++m) {
      group = group << 8 | (n + m < bytes.size() ? static_cast<unsigned char>(bytes[n + m]) : 0U);
    }
    const std::size_t digits = std::min<std::size_t>(bytes.size() - n, 3) + 1;
    for (std::size_t m = 0; m < 4; ++m) {
      text += m < digits ? kDigits[group >> (18 - 6 * m) & 0x3F] : '=';
    }
  }
  return text;
}

tJson jsonOfBytes(std::string_view bytes) {
  if (!isUtf8(bytes)) return {{"base64", toBase64(bytes)}};
  const std::size_t firstEnd = bytes.find('\n');
  const auto lineCount = std::count(bytes.begin(), bytes.end(), '\n');
  const bool isOneLine = firstEnd == std::string_view::npos || firstEnd + 1 == bytes.size();
  if (isOneLine || lineCount > kMostLines) return std::string(bytes);
  tJson lines = tJson::array();
  while (!bytes.empty()) {
    const std::size_t length = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
    lines.push_back(std::string(bytes.substr(0, length)));
    bytes.remove_prefix(length);
  }
  return lines;
}

std::string bytesOfJson(const tJson& json) {
  if (json.is_string()) return json.get<std::string>();
  if (json.is_object() && json.size() == 1 && json.contains("base64") &&
      json["base64"].is_string()) {
    return fromBase64(json["base64"].get_ref<const std::string&>());
  }
  const std::runtime_error noText("neither a text nor a list of texts nor base64");
  if (!json.is_array()) throw noText;
  std::string bytes;
  for (const tJson& line : json) {
    if (!line.is_string()) throw noText;
    bytes += line.get_ref<const std::string&>();
  }
  return bytes;
}

}  // namespace tool
