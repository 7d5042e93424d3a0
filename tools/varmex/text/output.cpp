#include "tools/varmex/text/output.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "tools/varmex/text/files.h"

namespace tool {

namespace {

// Texts of a description may be in any encoding; what is no UTF-8 is replaced.
void print(const tJson& json, int indentation) {
  std::cout << json.dump(indentation, ' ', false, tJson::error_handler_t::replace) << '\n';
}

}  // namespace

void printJson(const tJson& json) { print(json, 2); }

void printJsonLine(const tJson& json) { print(json, -1); }

void save(const std::string& text, const std::string& path) {
  if (path == "-") {
    std::cout << text << std::flush;
    if (!std::cout) throw std::runtime_error("can't write the standard output");
    return;
  }
  std::ofstream file(filePath(path), std::ios::binary);
  file << text << std::flush;
  if (!file) throw std::runtime_error("can't write " + path + ": " + std::strerror(errno));
}

}  // namespace tool
