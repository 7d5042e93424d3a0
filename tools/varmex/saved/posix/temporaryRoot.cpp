#include "tools/varmex/saved/temporaryRoot.h"

#include <fcntl.h>
#include <sys/auxv.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr const char* kName = "varmex-saved-";
constexpr const char* kVariable = "VARMEX_FSROOT";
constexpr const char* kFolders[] = {"etc", "etc/pxi", "var", "var/lib", "var/lib/PXISA"};
constexpr int kEndings[] = {SIGHUP,  SIGINT,    SIGQUIT, SIGPIPE, SIGALRM,
                            SIGTERM, SIGXCPU,   SIGXFSZ, SIGUSR1, SIGUSR2,
                            SIGPROF, SIGVTALRM, SIGIO,   SIGPWR,  SIGSTKFLT};

// All signals that end a process and are no fault of its own. After a fault nothing is to be relied
// on: what it leaves is taken away as what a kill leaves.
template <class Use>
void forEachEnding(Use use) {
  for (const int number : kEndings) use(number);
  for (int number = SIGRTMIN; number <= SIGRTMAX; ++number) use(number);
}

[[noreturn]] void raise(const std::string& what) {
  throw std::runtime_error(what + ": " + std::strerror(errno));
}

// What the signal handler needs. The folder is locked as long as its process lives, which tells it
// from what a killed one left.
char rootPath[256];
volatile std::sig_atomic_t rootFolder = -1;

// Calls nothing that a signal handler may not call.
void emptyRoot() {
  for (const char* const path : kSavedPaths) unlinkat(rootFolder, path, 0);
  unlinkat(rootFolder, kRegistryPath, 0);
}

void removeRoot() {
  if (rootFolder < 0) return;
  emptyRoot();
  for (std::size_t n = std::size(kFolders); n-- > 0;) {
    unlinkat(rootFolder, kFolders[n], AT_REMOVEDIR);
  }
  rmdir(rootPath);
  close(rootFolder);
  rootFolder = -1;
}

void endBySignal(int number) {
  removeRoot();
  std::signal(number, SIG_DFL);
  std::raise(number);
}

// Signals wait while the root is half made.
class tSignalsBlocked {
 public:
  tSignalsBlocked() {
    sigset_t endings;
    sigemptyset(&endings);
    forEachEnding([&](int number) { sigaddset(&endings, number); });
    pthread_sigmask(SIG_BLOCK, &endings, &before_);
  }
  tSignalsBlocked(const tSignalsBlocked&) = delete;
  tSignalsBlocked& operator=(const tSignalsBlocked&) = delete;
  ~tSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

// Whoever ignores a signal, as under nohup, goes on ignoring it.
void handleEndings() {
  forEachEnding([](int number) {
    struct sigaction action {};
    if (sigaction(number, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) return;
    action.sa_handler = endBySignal;
    sigaction(number, &action, nullptr);
  });
}

// A folder that is locked by this process alone; -1 where another one has it or it is going.
int openLocked(const char* path) {
  const int folder = open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (folder < 0) return -1;
  struct stat status {};
  if (flock(folder, LOCK_EX | LOCK_NB) == 0 && fstat(folder, &status) == 0 &&
      status.st_uid == geteuid() && status.st_nlink > 0) {
    return folder;
  }
  close(folder);
  return -1;
}

// Takes away what processes left that were killed.
void sweep(const fs::path& parent) {
  std::error_code ignored;
  for (fs::directory_iterator entry(parent, ignored), end; !ignored && entry != end;
       entry.increment(ignored)) {
    if (!entry->path().filename().string().starts_with(kName)) continue;
    const int folder = openLocked(entry->path().c_str());
    if (folder < 0) continue;
    std::error_code failure;
    fs::remove_all(entry->path(), failure);
    close(folder);
  }
}

std::vector<std::string> parents() {
  std::vector<std::string> folders = {"/dev/shm", "/tmp"};
  const char* const wanted = secure_getenv("TMPDIR");
  if (wanted != nullptr && *wanted != '\0') folders.insert(folders.begin(), wanted);
  return folders;
}

// False, with `errno` set, where there can be no root.
bool makeRootIn(const std::string& parent) {
  const std::string form = parent + '/' + kName + "XXXXXX";
  if (form.size() >= sizeof rootPath) return false;
  // A sweep that came between is over soon.
  for (int tries = 0; tries < 100; ++tries) {
    std::strcpy(rootPath, form.c_str());
    if (mkdtemp(rootPath) == nullptr) return false;
    const int folder = openLocked(rootPath);
    if (folder < 0) continue;
    rootFolder = folder;
    for (const char* const below : kFolders) {
      if (mkdirat(folder, below, S_IRWXU) == 0) continue;
      const int error = errno;
      removeRoot();
      errno = error;
      return false;
    }
    return true;
  }
  return false;
}

void makeRoot() {
  const tSignalsBlocked blocked;
  const std::vector<std::string> folders = parents();
  for (const std::string& parent : folders) sweep(parent);
  for (const std::string& parent : folders) {
    if (!makeRootIn(parent)) continue;
    handleEndings();
    static const struct tRemover {
      ~tRemover() { removeTemporaryRoot(); }
    } remover;
    return;
  }
  raise("can't make a temporary folder in " + folders.back());
}

void writeFile(const tFileContent& content) {
  const int file =
      openat(rootFolder, content.path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0) raise("can't write into " + std::string(rootPath));
  std::string_view rest = content.bytes;
  while (!rest.empty()) {
    const ssize_t written = write(file, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) {
      const int error = errno;
      close(file);
      errno = error;
      raise("can't write into " + std::string(rootPath));
    }
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  close(file);
}

}  // namespace

bool canChangeRoot() { return true; }

std::string fillTemporaryRoot(const std::vector<tFileContent>& files) {
  if (rootFolder < 0) makeRoot();
  emptyRoot();
  for (const tFileContent& file : files) writeFile(file);
  return rootPath;
}

void emptyTemporaryRoot() {
  if (rootFolder >= 0) emptyRoot();
}

void removeTemporaryRoot() {
  const tSignalsBlocked blocked;
  removeRoot();
}

std::optional<std::string> changeRoot(const std::optional<std::string>& root) {
  const char* const value = std::getenv(kVariable);
  const std::optional<std::string> before =
      value ? std::optional<std::string>(value) : std::nullopt;
  if (root && getauxval(AT_SECURE) != 0) {
    throw std::runtime_error("no other root can be read with the rights of another user");
  }
  const int result = root ? setenv(kVariable, root->c_str(), 1) : unsetenv(kVariable);
  if (result != 0) raise(std::string("can't set ") + kVariable);
  return before;
}

}  // namespace tool
