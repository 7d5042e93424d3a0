#include "tools/varmex/picture/picture.h"

#include <algorithm>

#include "tools/varmex/picture/legend.h"
#include "tools/varmex/picture/strip.h"
#include "tools/varmex/picture/style.h"

namespace tool {

namespace {

// The page, in units of which a landscape sheet is some 1100 wide.
constexpr int kMargin = 20;
constexpr int kPageWidth = 1072;
constexpr int kLeastPageWidth = 560;
constexpr int kBetweenStrips = 28;
constexpr int kMostMagnified = 160;  // in percent, in a wide window

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

  void write(std::ostream& out) const {
    const std::string width = std::to_string(width_ + 2 * kMargin);
    const std::string height = std::to_string(y_ + 2 * kMargin);
    const std::string size = " width=\"" + width + "\" height=\"" + height + '"';
    // A picture that is not too high for a landscape sheet is made to fit one.
    const char* const style = y_ <= width_ ? "picture onePage" : "picture";
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"" << style << '"' << size
        << " viewBox=\"0 0 " << width << ' ' << height
        << "\" style=\"max-width:" << width_ * kMostMagnified / 100
        << "px\">\n<title>PXI chassis</title>\n"
        << kStyleSheet << "<rect class=\"page\"" << size << "/>\n"
        << svg_ << "</svg>\n";
  }

 private:
  void addGroup(const char* style, const std::string& body) {
    tSvg svg;
    svg.openGroup(style, kMargin + x_, kMargin + y_);
    svg_ += svg.body() + body + "</g>\n";
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

}  // namespace

void drawChassis(const std::vector<tJson>& chassis, tPciNotation notation, std::ostream& out) {
  tPage page;
  tLegend legend(notation);
  for (const tJson& one : chassis) {
    for (const tStrip& strip : planStrips(one, notation)) {
      page.add(paintStrip(strip));
      legend.note(strip);
    }
  }
  page.addLegend(legend);
  page.write(out);
}

}  // namespace tool
