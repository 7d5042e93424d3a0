#include "tools/varmex/picture/picture.h"

#include <algorithm>
#include <string_view>

#include "tools/varmex/picture/legend.h"
#include "tools/varmex/picture/strip.h"
#include "tools/varmex/picture/style.h"
#include "tools/varmex/text/embedded.h"

namespace tool {

namespace {

// The page, in units of which a landscape sheet is some 1100 wide.
constexpr int kMargin = 20;
constexpr int kPageWidth = 1072;
constexpr int kLeastPageWidth = 560;
constexpr int kBetweenStrips = 28;
constexpr int kMostMagnified = 160;  // in percent, in a wide window
constexpr int kInPage = 115;

// Between elements a line break is a node of its own, which a page with many pictures feels.
std::string withoutBreaks(std::string_view svg) {
  std::string text;
  text.reserve(svg.size());
  for (std::size_t n = 0; n < svg.size(); ++n) {
    if (svg[n] != '\n' || n == 0 || svg[n - 1] != '>') text += svg[n];
  }
  return text;
}

// Puts strips side by side as far as the page is wide.
class tPage {
 public:
  void add(const tPainted& strip) {
    if (x_ > 0 && x_ + strip.width > kPageWidth) endRow();
    addGroup("chassis", strip.body);
    width_ = std::max(width_, x_ + strip.width);
    rowHeight_ = std::max(rowHeight_, strip.height);
    x_ += strip.width + kBetweenStrips;
  }

  void addLegend(const tLegend& legend) {
    endRow();
    tSvg svg;
    const int height = legend.paint(svg, width_);
    addGroup("legend", svg.body());
    y_ += height;
  }

  void addFoot(const std::string& text) {
    y_ += kBetweenStrips;
    tSvg svg;
    svg.text(text, {0, 0, width_, kPlainFont});
    addGroup("foot", svg.body());
  }

  void write(std::ostream& out) const {
    // A picture that is not too high for a landscape sheet is made to fit one.
    const char* const style = y_ <= width_ ? "picture onePage" : "picture";
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"" << style << '"' << size(100)
        << viewBox() << " style=\"max-width:" << width_ * kMostMagnified / 100
        << "px\">\n<title>PXI chassis</title>\n<style>" << kPictureStyle.text << "</style>\n"
        << kPicturePattern << "<rect class=\"page\"" << size(100) << "/>\n"
        << svg_ << "</svg>\n";
  }

  std::string element() const {
    return "<svg class=\"drawing\"" + size(kInPage) + viewBox() + ">" + withoutBreaks(svg_) +
           "</svg>\n";
  }

 private:
  void addGroup(const char* style, const std::string& body) {
    tSvg svg;
    svg.openGroup(style, kMargin + x_, kMargin + y_);
    svg_ += svg.body() + body + "</g>\n";
  }

  std::string size(int percent) const {
    return " width=\"" + std::to_string((width_ + 2 * kMargin) * percent / 100) + "\" height=\"" +
           std::to_string((y_ + 2 * kMargin) * percent / 100) + '"';
  }

  std::string viewBox() const {
    return " viewBox=\"0 0 " + std::to_string(width_ + 2 * kMargin) + ' ' +
           std::to_string(y_ + 2 * kMargin) + '"';
  }

  void endRow() {
    y_ += rowHeight_ + kBetweenStrips;
    x_ = 0;
    rowHeight_ = 0;
  }

  std::string svg_;
  int x_ = 0;
  int y_ = 0;
  int rowHeight_ = 0;
  int width_ = kLeastPageWidth;
};

tPage pageOf(const std::vector<tJson>& chassis, tPciNotation notation) {
  tPage page;
  tLegend legend(notation);
  for (const tJson& one : chassis) {
    for (const tStrip& strip : planStrips(one, notation)) {
      page.add(paintStrip(strip));
      legend.note(strip);
    }
  }
  page.addLegend(legend);
  return page;
}

}  // namespace

const char* const kPicturePattern =
    R"svg(<defs><pattern id="hatch" width="7" height="7" patternUnits="userSpaceOnUse" patternTransform="rotate(45)">
<rect width="7" height="7" fill="#fff"/><path d="M0 0V7" stroke="#aaa" stroke-width="2"/></pattern></defs>
)svg";

void drawChassis(const std::vector<tJson>& chassis, tPciNotation notation, const std::string& foot,
                 std::ostream& out) {
  tPage page = pageOf(chassis, notation);
  page.addFoot(foot);
  page.write(out);
}

std::string pictureElement(const tJson& chassis, tPciNotation notation) {
  return pageOf({chassis}, notation).element();
}

}  // namespace tool
