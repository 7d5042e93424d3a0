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

// A route as the coordinator is told of it.
struct RouteReply {
  std::uint32_t ticket;
  std::string_view destination;  // as a JSON string
  std::uint32_t cost;
  std::uint32_t seedIndex;
};

// `text` as a JSON string.
std::string quote(const std::string& text);

// An array under construction, short ones in place. Running out of memory raises std::bad_alloc.
class Reply {
 public:
  Reply();
  Reply(const Reply&) = delete;
  Reply& operator=(const Reply&) = delete;

  void addText(std::string_view json);
  void addRoute(const RouteReply& route);
  void addConflict(const ConflictRecord& conflict);

  std::string_view text() const { return {text_, length_}; }

  // Of the buffer that coordinators are asked for: 256 bytes, doubled until the text fits with two
  // more, its terminator and the writer's mark.
  std::size_t bufferSize() const;

 private:
  static constexpr std::string_view kEmpty = "[]";

  char* beginElement(std::size_t longest);
  void endElement(char* end);
  void enlarge(std::size_t needed);

  char inPlace_[1024];
  std::unique_ptr<char[]> larger_;
  char* text_ = inPlace_;
  std::size_t capacity_ = sizeof inPlace_;
  std::size_t length_;
};

}  // namespace telmar

#endif
