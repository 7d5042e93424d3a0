#ifndef TESTS_SUPPORT_SERVICELIBRARY_H
#define TESTS_SUPPORT_SERVICELIBRARY_H

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/support/testMachine.h"
#include "tests/support/testPlace.h"

namespace test {

// A service library where the library under test finds one, as long as it lives: "full", or
// "without..." one of its functions.
class tInstalledServiceLibrary {
 public:
  explicit tInstalledServiceLibrary(const std::string& variant, const std::string& answers = "") {
    std::filesystem::copy_file(tTestPlace::programs() / "service" / variant / VARMEX_SERVICE_FILE,
                               file(), std::filesystem::copy_options::overwrite_existing);
    std::filesystem::remove(log());
    tell(answers);
  }
  ~tInstalledServiceLibrary() {
    std::filesystem::remove(file());
    std::filesystem::remove(control());
  }
  tInstalledServiceLibrary(const tInstalledServiceLibrary&) = delete;
  tInstalledServiceLibrary& operator=(const tInstalledServiceLibrary&) = delete;

  // What its functions answer: "initialize", "open" and "modeStatus" a status code, "mode" the
  // mode, each with its number behind a blank.
  static void tell(const std::string& text) { tTestMachine::write(control(), text); }

  // The calls since the last look, each in angle brackets.
  static std::string takeCalls() {
    std::string calls;
    {
      std::ifstream file(log());
      for (std::string line; std::getline(file, line);) {
        if (line.ends_with('\r')) line.pop_back();
        calls += '<' + line + '>';
      }
    }
    std::filesystem::remove(log());
    return calls;
  }

  static std::filesystem::path file() { return tTestPlace::libraries() / VARMEX_SERVICE_FILE; }

 private:
  static std::filesystem::path log() { return tTestPlace::folder() / "service.log"; }
  static std::filesystem::path control() { return tTestPlace::folder() / "service.control"; }
};

}  // namespace test

#endif
