#include "tools/varmex/text/output.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>

#include "tools/varmex/text/files.h"

namespace tool {

namespace {

// Texts of a description may be in any encoding; what is no UTF-8 is replaced.
void print(const tJson& json, int indentation) {
  std::cout << json.dump(indentation, ' ', false, tJson::error_handler_t::replace) << '\n';
}

bool write(const std::string& text, const std::filesystem::path& path) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  return !file.fail();
}

// A device or a pipe is written as it is, and through a link the file that it leads to.
std::filesystem::path fileBehind(const std::string& path) {
  std::error_code error;
  const std::filesystem::path file = filePath(path);
  if (!std::filesystem::is_symlink(file, error)) return file;
  const std::filesystem::path behind = std::filesystem::canonical(file, error);
  return error ? file : behind;
}

// A file that is new and has a name of its own beside another.
std::filesystem::path nameBeside(const std::filesystem::path& file) {
  std::filesystem::path beside = file;
  return beside += ".new-" + std::to_string(std::random_device()());
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
  std::error_code ignored;
  const std::filesystem::path file = fileBehind(path);
  const auto old = std::filesystem::status(file, ignored);
  const bool isReplaced = std::filesystem::is_regular_file(old);
  const std::filesystem::path target = isReplaced ? nameBeside(file) : file;
  const bool isWritten = write(text, target);
  if (isWritten && isReplaced) std::filesystem::permissions(target, old.permissions(), ignored);
  if (isWritten && (!isReplaced || renameOver(target, file))) return;
  const int reason = errno;
  if (isReplaced || !std::filesystem::exists(old)) std::filesystem::remove(target, ignored);
  throw std::runtime_error("can't write " + path + ": " + std::strerror(reason));
}

}  // namespace tool
