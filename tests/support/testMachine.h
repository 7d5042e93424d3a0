#ifndef TESTS_SUPPORT_TESTMACHINE_H
#define TESTS_SUPPORT_TESTMACHINE_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace test {

// The files and registry values that a library under test finds on its machine. Each one starts
// without any of them and takes away what it wrote. On Windows these are the machine's own, so it
// refuses to work but under Wine or where VARMEX_THROWAWAY_MACHINE is set.
class tTestMachine {
 public:
  tTestMachine();
  ~tTestMachine();

  std::filesystem::path folder() const;  // of the two description files
  std::filesystem::path pxiSys() const { return folder() / "pxisys.ini"; }
  std::filesystem::path pxieSys() const { return folder() / "pxiesys.ini"; }
  std::filesystem::path configuration() const;

  void writePxiSys(const std::string& text) { write(pxiSys(), text); }
  void writePxieSys(const std::string& text) { write(pxieSys(), text); }
  void writeConfiguration() { write(configuration(), "; lock\n"); }
  static void write(const std::filesystem::path& path, const std::string& text);

  // Values below HKEY_LOCAL_MACHINE, by the key's path in the 64-bit view.
  void setRegistryValue(const std::string& key, const std::string& name, std::uint32_t type,
                        const std::string& bytes);
  void setRegistryText(const std::string& key, const std::string& name, const std::string& text);
  void setRegistryNumber(const std::string& key, const std::string& name, std::uint32_t number);

 private:
  struct tState;
  std::unique_ptr<tState> state_;
};

// An exclusive lock on a whole file, as whoever rewrites the description takes it.
class tExclusiveLock {
 public:
  explicit tExclusiveLock(const std::filesystem::path& path);

 private:
  std::shared_ptr<const void> held_;
};

// Runs `work` on a thread whose stack has `bytes` bytes, and waits for it.
void runWithStack(std::size_t bytes, const std::function<void()>& work);

// Until every other thread of the process sleeps, or two seconds. Whether they do, where that can
// be known.
bool awaitSleep();

// Bytes in use of all heaps of the process. A sanitizer's memory is none of it.
std::ptrdiff_t memoryInUse();

// Lets the end of the process take a while behind the end of all libraries, where a system has
// that.
void endLate();

}  // namespace test

#endif
