#include "tools/varmex/text/output.h"

#include <fstream>
#include <iostream>
#include <stdexcept>

namespace tool {

void printJson(const tJson& json) {
  // Texts of a description may be in any encoding; what is no UTF-8 is replaced.
  std::cout << json.dump(2, ' ', false, tJson::error_handler_t::replace) << '\n';
}

void save(const std::string& text, const std::string& path) {
  if (path == "-") {
    std::cout << text << std::flush;
    if (!std::cout) throw std::runtime_error("can't write the standard output");
    return;
  }
  std::ofstream file(path, std::ios::binary);
  file << text << std::flush;
  if (!file) throw std::runtime_error("can't write " + path);
}

}  // namespace tool
