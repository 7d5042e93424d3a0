#ifndef TOOLS_VARMEX_TEXT_EMBEDDED_H
#define TOOLS_VARMEX_TEXT_EMBEDDED_H

#include <string_view>

namespace tool {

// A file of this folder that the program has in it, as it was when the program was built.
struct tEmbedded {
  std::string_view text;
  std::string_view sha256;  // of the text, in hexadecimal
};

extern const tEmbedded kPictureStyle;  // picture/picture.css
extern const tEmbedded kPageStyle;     // page/page.css
extern const tEmbedded kPageScript;    // page/page.js

}  // namespace tool

#endif
