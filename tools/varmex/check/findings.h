#ifndef TOOLS_VARMEX_CHECK_FINDINGS_H
#define TOOLS_VARMEX_CHECK_FINDINGS_H

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/varmex/check/refusals.h"

namespace tool {

// A place in the description.
struct tPosition {
  std::string file;
  std::uint32_t line = 0;  // as an editor counts, from 1; 0 where it is no line's
  std::string section;
  std::string item;
};

// "pxisys.ini:68", or the file alone.
std::string textOf(const tPosition& position);

// Wrong: the library refuses something because of it, or gives an answer that is no true one.
// Doubtful: it answers, but maybe not what the writer meant.
enum class tSeverity { wrong, doubtful };

const char* severityName(tSeverity severity);

struct tFinding {
  std::string id;  // stable from version to version
  tSeverity severity;
  tPosition position;
  std::string message;
  std::string answer;         // what the library answers because of it
  std::string source = {};    // the text of the line
  std::string question = {};  // what it refuses, if anything
  std::string refusal = {};   // in these words (varmex::Error::what)
};

// Something that the library can be asked, in words. Of what belongs to no chassis, the session is
// asked.
struct tQuestion {
  std::string text;
  std::optional<std::uint32_t> chassis;
};

tQuestion aboutSession();
tQuestion aboutChassis(std::uint32_t chassis, const std::string& attribute = "");
tQuestion aboutSlot(std::uint32_t chassis, std::uint32_t slot, const std::string& attribute = "");
tQuestion aboutBridge(std::uint32_t chassis, std::uint32_t bridge,
                      const std::string& attribute = "");

// Collects findings, each once, up to a number that nobody reads through.
class tFindings {
 public:
  static constexpr std::size_t kMost = 1000;

  // The library refuses the question with that because of it.
  void addRefused(const char* id, const tPosition& position, const std::string& message,
                  const tQuestion& question, const tRefusedAnswer& refusal);

  // The library does not refuse anything.
  void add(tSeverity severity, const char* id, const tPosition& position,
           const std::string& message, const std::string& answer);

  // The library refuses this, too, because of a finding that is there already.
  void alsoRefused(const tQuestion& question, const tRefusedAnswer& refusal);

  // Whether a finding tells why the library refuses something about that chassis in these words.
  bool explain(const std::optional<std::uint32_t>& chassis, const std::string& refusal) const;

  bool isFull() const { return list_.size() >= kMost; }
  bool empty() const { return list_.empty(); }
  // By file and line.
  std::vector<tFinding> sorted() const;

 private:
  void add(tFinding finding);

  std::vector<tFinding> list_;
  std::set<std::string> known_;
  std::set<std::string> refusals_;
};

}  // namespace tool

#endif
