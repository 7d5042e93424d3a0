#include "tools/varmex/picture/rsvgConvert.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "tools/varmex/text/replacement.h"

namespace tool {

namespace {

using tFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// A file without a name, which the child inherits and which goes with the two processes.
tFile keep(const std::string& text) {
  tFile file(std::tmpfile(), std::fclose);
  if (!file || std::fwrite(text.data(), 1, text.size(), file.get()) != text.size() ||
      std::fflush(file.get()) != 0) {
    throw std::runtime_error(std::string("can't keep a picture: ") + std::strerror(errno));
  }
  return file;
}

// Answers the exit status.
int run(std::vector<std::string> arguments) {
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  pid_t child = 0;
  const int failure = posix_spawnp(&child, pointers[0], nullptr, nullptr, pointers.data(), environ);
  if (failure == ENOENT) {
    throw std::runtime_error(
        "pictures as PNG and PDF are made by the program rsvg-convert, which is not installed; "
        "Debian has it in the package librsvg2-bin (apt-get install librsvg2-bin)");
  }
  if (failure != 0) {
    throw std::runtime_error(std::string("can't run rsvg-convert: ") + std::strerror(failure));
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  return status;
}

}  // namespace

void convertPictures(const std::vector<std::string>& pictures, const std::string& format,
                     const std::string& path) {
  tReplacement file(path);
  // Its own limit would let a picture of many chassis fail.
  std::vector<std::string> arguments = {"rsvg-convert", "--format=" + format, "--unlimited",
                                        "--output=" + file.path().string()};
  std::vector<tFile> files;
  for (const std::string& picture : pictures) {
    files.push_back(keep(picture));
    arguments.push_back("/proc/self/fd/" + std::to_string(fileno(files.back().get())));
  }
  if (run(arguments) != 0) {
    throw std::runtime_error("can't write " + path + ": rsvg-convert failed");
  }
  file.finish();
}

}  // namespace tool
