#ifndef TOOLS_VARMEX_CHECK_FINDINGS_H
#define TOOLS_VARMEX_CHECK_FINDINGS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tool {

// A place in the description. Line 0 stands for none.
struct tPosition {
  std::string file;
  std::uint32_t line = 0;
  std::string section;
  std::string item;
};

enum class tSeverity { wrong, doubtful };

struct tFinding {
  std::string id;  // stable from version to version
  tSeverity severity;
  tPosition position;
  std::string message;
  std::string answer;  // what the library answers because of it
};

// Collects findings, each once, up to a number that nobody reads through.
class tFindings {
 public:
  static constexpr std::size_t kMost = 1000;

  // `answer` is asked for only if the finding is kept.
  void add(tSeverity severity, const char* id, const tPosition& position,
           const std::string& message, const std::function<std::string()>& answer);

  bool isFull() const { return list_.size() >= kMost; }
  std::size_t size() const { return list_.size(); }
  // By file and line.
  std::vector<tFinding> sorted() const;

 private:
  std::vector<tFinding> list_;
  std::set<std::string> known_;
};

}  // namespace tool

#endif
