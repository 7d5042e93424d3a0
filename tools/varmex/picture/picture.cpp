#include "tools/varmex/picture/picture.h"

#include <algorithm>
#include <cstdint>
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

// Of paper, inside of its margins, in millimetres: what the style sheet prints on.
constexpr int kSheetWidth = 277;
constexpr int kSheetHeight = 190;

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
    parts_.push_back({"chassis", rows_.size(), x_, strip.body});
    width_ = std::max(width_, x_ + strip.width);
    rowHeight_ = std::max(rowHeight_, strip.height);
    x_ += strip.width + kBetweenStrips;
  }

  void addLegend(const tLegend& legend) {
    endRow();
    tSvg svg;
    rowHeight_ = legend.paint(svg, width_);
    parts_.push_back({"legend", rows_.size(), 0, svg.body()});
    endRow();
  }

  void addFoot(const std::string& text) {
    tSvg svg;
    svg.text(text, {0, 0, width_, kPlainFont});
    parts_.push_back({"foot", rows_.size(), 0, svg.body()});
    endRow();
  }

  void write(std::ostream& out) const {
    const tPaper paper = placeOnPaper();
    // A picture that is not too high for a landscape sheet is made to fit one.
    const bool isOneSheet = height() <= width_;
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"picture "
        << (isOneSheet ? "oneSheet" : "sheets") << '"' << size(100) << viewBox()
        << " preserveAspectRatio=\"xMidYMin\" style=\"max-width:" << width_ * kMostMagnified / 100
        << "px;--sheets:" << paper.sheets << "\">\n<title>PXI chassis</title>\n<style>"
        << kPictureStyle.text << "</style>\n"
        << kPicturePattern << "<rect class=\"page\"" << size(100) << "/>\n";
    for (const tPart& part : parts_) {
      out << groupOf(part, " style=\"--x:" + std::to_string(kMargin + part.x) +
                               "px;--y:" + std::to_string(paper.rows[part.row]) + "px\"");
    }
    out << "</svg>\n";
  }

  std::string element() const {
    std::string groups;
    for (const tPart& part : parts_) groups += groupOf(part, {});
    const char* const style = width_ < kPageWidth * 2 / 3 ? "drawing small" : "drawing";
    return std::string("<svg class=\"") + style + '"' + size(kInPage) + viewBox() + ">" +
           withoutBreaks(groups) + "</svg>\n";
  }

 private:
  struct tPart {
    const char* style;
    std::size_t row;
    int x;
    std::string body;
  };

  struct tRow {
    int y;
    int height;
  };

  // Where the rows begin on sheets below each other.
  struct tPaper {
    std::vector<std::int64_t> rows;
    std::int64_t sheets = 1;
  };

  // A row that does not fit below the others begins the next sheet.
  tPaper placeOnPaper() const {
    const auto topOf = [this](std::int64_t sheet) {
      return sheet * (width_ + 2 * kMargin) * kSheetHeight / kSheetWidth;
    };
    tPaper paper;
    std::int64_t y = kMargin;
    for (const tRow& row : rows_) {
      if (y > kMargin && y + row.height > topOf(1) - kMargin) {
        ++paper.sheets;
        y = kMargin;
      }
      paper.rows.push_back(topOf(paper.sheets - 1) + y);
      y += row.height;
      paper.sheets += y / topOf(1);  // one that is higher than a sheet
      y = y % topOf(1) + kBetweenStrips;
    }
    return paper;
  }

  std::string groupOf(const tPart& part, const std::string& attributes) const {
    return std::string("<g class=\"") + part.style + "\" transform=\"translate(" +
           std::to_string(kMargin + part.x) + ' ' + std::to_string(kMargin + rows_[part.row].y) +
           ")\"" + attributes + ">\n" + part.body + "</g>\n";
  }

  int height() const { return rows_.back().y + rows_.back().height; }

  std::string size(int percent) const {
    return " width=\"" + std::to_string((width_ + 2 * kMargin) * percent / 100) + "\" height=\"" +
           std::to_string((height() + 2 * kMargin) * percent / 100) + '"';
  }

  std::string viewBox() const {
    return " viewBox=\"0 0 " + std::to_string(width_ + 2 * kMargin) + ' ' +
           std::to_string(height() + 2 * kMargin) + '"';
  }

  void endRow() {
    const int y = rows_.empty() ? 0 : rows_.back().y + rows_.back().height + kBetweenStrips;
    rows_.push_back({y, rowHeight_});
    x_ = 0;
    rowHeight_ = 0;
  }

  std::vector<tPart> parts_;
  std::vector<tRow> rows_;
  int x_ = 0;
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
