#include "tests/support/testPlace.h"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace test {

namespace fs = std::filesystem;

// A process keeps its number when it starts a program in its own place; a child has another.
tTestPlace::tTestPlace(char** arguments) {
  const fs::path own =
      fs::temp_directory_path() / ("varmex-test-place-" + std::to_string(getpid()));
  const char* const known = std::getenv(kVariable);
  if (known && known == own) return;
  fs::remove_all(own);
  fs::create_directories(own);
  setenv(kVariable, own.c_str(), 1);
  const char* const others = std::getenv("LD_LIBRARY_PATH");
  const std::string path = others && *others ? own.string() + ':' + others : own.string();
  setenv("LD_LIBRARY_PATH", path.c_str(), 1);
  execv("/proc/self/exe", arguments);
  throw std::runtime_error("cannot start again");
}

fs::path tTestPlace::programs() { return fs::read_symlink("/proc/self/exe").parent_path(); }

fs::path tTestPlace::libraries() { return folder(); }

}  // namespace test
