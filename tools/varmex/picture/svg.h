#ifndef TOOLS_VARMEX_PICTURE_SVG_H
#define TOOLS_VARMEX_PICTURE_SVG_H

#include <string>

namespace tool {

// `text` as content of an XML element: escaped, and U+FFFD for what XML 1.0 does not accept, which
// is bytes that are not UTF-8 and control characters. A very long text is cut.
std::string xmlText(const std::string& text);

// A class of the style sheet, and how wide its letters are in percent of regular ones.
struct tFont {
  const char* style;
  int size;
  int weight = 100;
};

// How wide a text is, in the widest of the usual sans-serif fonts.
int textWidth(const std::string& text, const tFont& font);

struct tBox {
  int x;
  int y;
  int width;
  int height;
};

// Where a text stands and how much room it has. What is longer is set smaller as far as one can
// read it; what is longer still ends in an ellipsis and has the full text as its title.
struct tTextPlace {
  int x;
  int y;
  int width;
  const tFont& font;
  bool isVertical = false;  // reads upwards
};

// The elements of an SVG picture, in the order of painting. `style` is a class of the style sheet;
// `title` is what a browser shows under the mouse.
class tSvg {
 public:
  // `key` says in a few letters what the group shows ("slot 7"), for scripts.
  void openGroup(const char* style, int x, int y, const std::string& title = {},
                 const std::string& key = {});
  void closeGroup();
  void box(const tBox& box, const std::string& style, int radius = 0);
  void circle(int x, int y, int radius, const char* style);
  void path(const std::string& commands, const char* style, const std::string& key = {});
  void text(const std::string& text, const tTextPlace& place);

  const std::string& body() const { return body_; }

 private:
  std::string body_;
};

}  // namespace tool

#endif
