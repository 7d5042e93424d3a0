#ifndef TELMAR_TELMARUTILS_H
#define TELMAR_TELMARUTILS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The JSON texts that coordinator and adaptor exchange.
namespace telmar {

// Where a route may start.
struct Seed {
  std::uint32_t terminal = 0;  // index in the device's table
  std::uint32_t cost = 0;      // read and not used
  std::string_view token;      // raw text in the seed list, empty if it gives none
};

// Finds terminals by name. A name is compared as far as it goes, so that "PXI_Trig" finds
// "PXI_Trig0"; coordinators abbreviate.
class TerminalFinder {
 public:
  // Raises when there is none.
  virtual std::uint32_t findForSeed(std::string_view name) const = 0;
  virtual std::optional<std::uint32_t> findForDestination(std::string_view name) const = 0;

 protected:
  ~TerminalFinder() = default;
};

// A text that does not begin with an array is an empty list. Malformed lists raise -52005. The
// seeds refer to the text.
std::vector<Seed> parseSeedList(const char* json, const TerminalFinder& finder);

// Names that the finder does not know are dropped.
std::vector<std::uint32_t> parseTerminalList(const char* json, const TerminalFinder& finder);

struct ConflictRecord {
  std::uint64_t session;
  std::uint32_t ticket;
};

// A route as the coordinator is told of it.
struct RouteReply {
  std::uint32_t ticket;
  const char* destination;
  std::uint32_t cost;
  std::uint32_t seedIndex;
};

// An array under construction in a buffer of the in-place JSON writer: 256 bytes at first, doubled
// at need. Running out of memory raises std::bad_alloc.
class Reply {
 public:
  Reply();

  void addString(const char* value);
  void addRoute(const RouteReply& route);
  void addConflict(const ConflictRecord& conflict);

  const char* text() const { return buffer_.data(); }
  std::size_t bufferSize() const { return buffer_.size(); }

 private:
  static char* grow(char* cursor, void* reply);

  std::vector<char> buffer_;
  char* cursor_;
};

}  // namespace telmar

#endif
