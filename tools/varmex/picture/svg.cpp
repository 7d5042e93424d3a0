#include "tools/varmex/picture/svg.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/varmex/text/utf8.h"

namespace tool {

namespace {

using tCodePoints = std::vector<char32_t>;

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kEllipsis = 0x2026;
constexpr std::size_t kLongestText = 1000;  // in code points
constexpr int kSmallestFont = 10;

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// The code point at the front of `bytes`, which shrinks by what was read of it.
char32_t takeCodePoint(std::string_view& bytes) {
  constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  const auto lead = static_cast<unsigned char>(bytes.front());
  bytes.remove_prefix(1);
  if (lead < 0x80) return lead;
  const std::size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC0 || lead > 0xF7 || bytes.size() < more) return kReplacement;
  char32_t point = lead & (0x3F >> more);
  for (std::size_t n = 0; n < more; ++n) {
    const auto byte = static_cast<unsigned char>(bytes[n]);
    if (!isContinuation(byte)) return kReplacement;
    point = point << 6 | (byte & 0x3F);
  }
  if (point < kSmallest[more]) return kReplacement;
  bytes.remove_prefix(more);
  return point;
}

bool isAccepted(char32_t point) {
  if (point == '\t' || point == '\n') return true;
  const bool isControl = point < 0x20 || (point >= 0x7F && point < 0xA0);
  const bool isSurrogate = point >= 0xD800 && point < 0xE000;
  // Marks that turn the direction of writing would reach beyond the text.
  const bool turns = (point >= 0x202A && point < 0x202F) || (point >= 0x2066 && point < 0x206A);
  return !isControl && !isSurrogate && !turns && point != 0xFFFE && point != 0xFFFF &&
         point < 0x110000;
}

tCodePoints codePointsOf(std::string_view bytes) {
  tCodePoints points;
  while (!bytes.empty()) {
    if (points.size() == kLongestText) {
      points.push_back(kEllipsis);
      break;
    }
    const char32_t point = takeCodePoint(bytes);
    points.push_back(isAccepted(point) ? point : kReplacement);
  }
  return points;
}

std::string xmlOf(const tCodePoints& points) {
  std::string text;
  for (const char32_t point : points) {
    switch (point) {
      case '&': text += "&amp;"; break;
      case '<': text += "&lt;"; break;
      case '>': text += "&gt;"; break;
      case '"': text += "&quot;"; break;
      default: appendUtf8(text, point);
    }
  }
  return text;
}

struct tAdvance {
  std::u32string_view points;
  int percent;  // of the font size
};

constexpr tAdvance kAdvances[] = {{U" ijlI.,:;'|!", 33}, {U"tfr()[]{}-/\"", 41},
                                  {U"sckzJLF", 57},      {U"mwMWQO@%", 98},
                                  {U"<>=+#~^", 84},      {U"ABCDEGHKNPRSTUVXYZ&", 74}};
constexpr int kOtherAdvance = 63;
constexpr int kWideAdvance = 100;
constexpr char32_t kFirstWide = 0x1100;  // from here on most scripts fill a square

int advanceOf(char32_t point) {
  for (const tAdvance& advance : kAdvances) {
    if (advance.points.find(point) != advance.points.npos) return advance.percent;
  }
  return point >= kFirstWide && point != kEllipsis ? kWideAdvance : kOtherAdvance;
}

int widthOf(const tCodePoints& points, const tFont& font) {
  int percent = 0;
  for (const char32_t point : points) percent += advanceOf(point);
  return percent * font.weight / 100 * font.size / 100;
}

bool fits(const tCodePoints& points, int width, const tFont& font) {
  return widthOf(points, font) <= width;
}

void shorten(tCodePoints& points, int width, const tFont& font) {
  points.push_back(kEllipsis);
  while (points.size() > 1 && widthOf(points, font) > width) points.erase(points.end() - 2);
  while (points.size() > 1 && points[points.size() - 2] == ' ') points.erase(points.end() - 2);
}

std::string number(const char* name, int value) {
  return std::string(" ") + name + "=\"" + std::to_string(value) + '"';
}

std::string classOf(const std::string& style) { return " class=\"" + style + '"'; }

std::string keyAttribute(const std::string& key) {
  return key.empty() ? key : " data-key=\"" + key + '"';
}

std::string titleElement(const std::string& title) {
  return title.empty() ? title : "<title>" + xmlText(title) + "</title>";
}

}  // namespace

std::string xmlText(const std::string& text) { return xmlOf(codePointsOf(text)); }

int textWidth(const std::string& text, const tFont& font) {
  return widthOf(codePointsOf(text), font);
}

void tSvg::openGroup(const char* style, int x, int y, const std::string& title,
                     const std::string& key) {
  body_ += "<g" + classOf(style) + keyAttribute(key);
  if (x != 0 || y != 0) {
    body_ += " transform=\"translate(" + std::to_string(x) + ' ' + std::to_string(y) + ")\"";
  }
  body_ += '>' + titleElement(title) + '\n';
}

void tSvg::closeGroup() { body_ += "</g>\n"; }

void tSvg::box(const tBox& box, const std::string& style, int radius) {
  body_ += "<rect" + classOf(style) + number("x", box.x) + number("y", box.y) +
           number("width", box.width) + number("height", box.height);
  if (radius > 0) body_ += number("rx", radius);
  body_ += "/>\n";
}

void tSvg::circle(int x, int y, int radius, const char* style) {
  body_ +=
      "<circle" + classOf(style) + number("cx", x) + number("cy", y) + number("r", radius) + "/>\n";
}

void tSvg::path(const std::string& commands, const char* style, const std::string& key) {
  body_ += "<path" + classOf(style) + keyAttribute(key) + " d=\"" + commands + "\"/>\n";
}

void tSvg::text(const std::string& text, const tTextPlace& place) {
  if (text.empty()) return;
  tCodePoints points = codePointsOf(text);
  tFont font = place.font;
  while (font.size > kSmallestFont && !fits(points, place.width, font)) --font.size;
  const bool isCut = !fits(points, place.width, font);
  if (isCut) shorten(points, place.width, font);
  body_ += "<text" + classOf(font.style) + number("font-size", font.size);
  if (place.isVertical) {
    body_ += " transform=\"translate(" + std::to_string(place.x) + ' ' + std::to_string(place.y) +
             ") rotate(-90)\"";
  } else {
    body_ += number("x", place.x) + number("y", place.y);
  }
  body_ += '>' + titleElement(isCut ? text : std::string()) + xmlOf(points) + "</text>\n";
}

}  // namespace tool
