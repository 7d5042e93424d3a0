#ifndef TELMAR_TELMARUTILS_H
#define TELMAR_TELMARUTILS_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "telmar/TerminalNames.h"

// The JSON texts that coordinator and adaptor exchange.
namespace telmar {

// Where a route may start.
struct Seed {
  std::uint32_t terminal = 0;  // index in the device's table
  std::uint32_t cost = 0;      // read and not used
  std::string_view token;      // raw text in the seed list, empty if it gives none
};

// Each parser fills its list anew. A text that does not begin with an array is an empty list, a
// malformed one raises -52005.

// The seeds refer to the text. For one on an unknown terminal `raiseUnknown` is called, which must
// not return.
void parseSeedList(const char* json, const TerminalNames& names, void (*raiseUnknown)(),
                   std::vector<Seed>& seeds);

// Unknown names are dropped.
void parseTerminalList(const char* json, const TerminalNames& names,
                       std::vector<std::uint32_t>& terminals);

struct ConflictRecord {
  std::uint64_t session;
  std::uint32_t ticket;
};

// `text` as a JSON string.
std::string quote(const std::string& text);

// An array under construction, short ones in place. Running out of memory raises std::bad_alloc.
class Reply {
 public:
  Reply();
  Reply(const Reply&) = delete;
  Reply& operator=(const Reply&) = delete;

  // `json` and `destination` are JSON strings. No route costs anything.
  void addText(std::string_view json);
  void addRoute(std::uint32_t ticket, std::string_view destination, std::uint32_t seedIndex);
  void addConflict(const ConflictRecord& conflict);

  // The whole array, which lives as long as this. Called once, behind all additions.
  std::string_view close();

  // Of the buffer that coordinators are asked for: 256 bytes, doubled until the closed text fits
  // with two more, its terminator and the writer's mark.
  std::size_t bufferSize() const;

 private:
  // Where the next element is written.
  char* roomFor(std::size_t longest);
  void enlarge(std::size_t needed);

  char inPlace_[1024];
  std::unique_ptr<char[]> larger_;
  char* text_ = inPlace_;
  char* end_ = inPlace_;  // behind the comma of the last element, or the closing bracket
  char* limit_ = inPlace_ + sizeof inPlace_;
};

}  // namespace telmar

#endif
