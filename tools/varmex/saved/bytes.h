#ifndef TOOLS_VARMEX_SAVED_BYTES_H
#define TOOLS_VARMEX_SAVED_BYTES_H

#include <string>
#include <string_view>

#include "tools/varmex/describe/json.h"

namespace tool {

// Any bytes as a saved file has them: UTF-8 as a text, or as the list of its lines, each with its
// end, where there are several but not very many; all else as {"base64": ...}.
tJson jsonOfBytes(std::string_view bytes);

std::string toBase64(std::string_view bytes);

// The bytes again. Throws std::runtime_error, which tells what is wrong, for JSON of another form.
std::string bytesOfJson(const tJson& json);

}  // namespace tool

#endif
