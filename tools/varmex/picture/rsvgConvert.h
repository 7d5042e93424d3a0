#ifndef TOOLS_VARMEX_PICTURE_RSVGCONVERT_H
#define TOOLS_VARMEX_PICTURE_RSVGCONVERT_H

#include <string>
#include <vector>

namespace tool {

// Has the program rsvg-convert write SVG pictures into a file of a format of its own: "png" takes
// one, "pdf" has a page for each. Throws std::runtime_error, which tells what to do, where it is
// not installed or does not succeed. A pair: one source for each platform.
void convertPictures(const std::vector<std::string>& pictures, const std::string& format,
                     const std::string& path);

}  // namespace tool

#endif
