#ifndef TESTS_SUPPORT_TESTPLACE_H
#define TESTS_SUPPORT_TESTPLACE_H

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace test {

// A folder that this process alone has, as long as it lives, so that test programs can run side by
// side. On Linux `main` must make it ahead of all else: the system is told where libraries are only
// when a program starts, so the program starts a second time. VARMEX_TEST_PLACE names the folder to
// whatever is loaded.
class tTestPlace {
 public:
  explicit tTestPlace(char** arguments);
  ~tTestPlace() {
    std::error_code ignored;
    std::filesystem::remove_all(folder(), ignored);
  }
  tTestPlace(const tTestPlace&) = delete;
  tTestPlace& operator=(const tTestPlace&) = delete;

  static std::filesystem::path folder() { return std::getenv(kVariable); }
  // Where this program and those that it starts were built.
  static std::filesystem::path programs();
  // Where the system finds a library by its bare name. Under Wine it is the prefix's own: there
  // programs that run at once need a prefix each.
  static std::filesystem::path libraries();

 private:
  static constexpr const char* kVariable = "VARMEX_TEST_PLACE";
};

}  // namespace test

#endif
