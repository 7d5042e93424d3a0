#ifndef TESTS_SUPPORT_SERVICELIBRARY_H
#define TESTS_SUPPORT_SERVICELIBRARY_H

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/support/testMachine.h"

namespace test {

// A service library where the library under test finds one, as long as it lives: "full", or
// "without..." one of its functions.
class tInstalledServiceLibrary {
 public:
  explicit tInstalledServiceLibrary(const std::string& variant, const std::string& control = "") {
    std::filesystem::create_directories(file().parent_path());
    std::filesystem::copy_file(folder() / variant / VARMEX_SERVICE_FILE, file(),
                               std::filesystem::copy_options::overwrite_existing);
    std::filesystem::remove(folder() / "service.log");
    tell(control);
  }
  ~tInstalledServiceLibrary() {
    std::filesystem::remove(file());
    std::filesystem::remove(folder() / "service.control");
  }
  tInstalledServiceLibrary(const tInstalledServiceLibrary&) = delete;
  tInstalledServiceLibrary& operator=(const tInstalledServiceLibrary&) = delete;

  // What its functions answer: "initialize", "open" and "modeStatus" a status code, "mode" the
  // mode, each with its number behind a blank.
  static void tell(const std::string& control) {
    tTestMachine::write(folder() / "service.control", control);
  }

  // The calls since the last look, each in angle brackets.
  static std::string takeCalls() {
    std::string calls;
    {
      std::ifstream log(folder() / "service.log");
      for (std::string line; std::getline(log, line);) {
        if (line.ends_with('\r')) line.pop_back();
        calls += '<' + line + '>';
      }
    }
    std::filesystem::remove(folder() / "service.log");
    return calls;
  }

  static std::filesystem::path file() {
    return std::filesystem::path(VARMEX_SERVICE_INSTALLED) / VARMEX_SERVICE_FILE;
  }

 private:
  static std::filesystem::path folder() { return VARMEX_SERVICE_FOLDER; }
};

}  // namespace test

#endif
