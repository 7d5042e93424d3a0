// Scans the input as JSON, and writes with it: the first byte of each record chooses an operation,
// the rest is its key and value. Every text that the writer makes must be accepted by the scanner
// and by an independent parser.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "fuzz/support.h"
#include "ostrel/quarks/jsonScanner.h"
#include "ostrel/quarks/status.h"

namespace {

using namespace varmex;

// The parser wants UTF-8, which the writer leaves to its callers.
std::string asAscii(const std::string& text) {
  std::string ascii = text.c_str();
  for (char& byte : ascii) byte = static_cast<char>(byte & 0x7F);
  return ascii.c_str();
}

char* addOne(char* cursor, const std::string& record, tStatusRecord& status) {
  const std::string key = asAscii(record.substr(1, record.size() / 2));
  const std::string value = asAscii(record.substr(1 + record.size() / 2));
  switch (record[0] & 7) {
    case 0: return jsonAddI32(cursor, key.c_str(), record[0], statusGrow, &status);
    case 1: return jsonAddU64(cursor, key.c_str(), ~std::uint64_t{0}, statusGrow, &status);
    case 2: return jsonAddObject(cursor, key.c_str(), statusGrow, &status) - 1;
    case 3: return *(cursor + 1) ? cursor + 1 : cursor;
    default: return jsonAddString(cursor, key.c_str(), value.c_str(), statusGrow, &status);
  }
}

void writeRecords(const std::string& input) {
  tStatusRecord status = makeStatus();
  char* cursor = statusBegin(status).cursor;
  for (std::size_t start = 0; start < input.size();) {
    const std::size_t length = 1 + static_cast<unsigned char>(input[start]) / 2;
    cursor = addOne(cursor, input.substr(start, length), status);
    start += length;
  }
  fuzz::require(jsonFindEnd(status.text) != nullptr);
  fuzz::require(nlohmann::json::accept(status.text));
  fuzz::require(status.text[status.capacity - 1] == 'J');
  statusReleaseText(status);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  // The scanner is laxer with numbers and takes any bytes in texts; it accepts what the parser
  // does.
  const std::string text = input.c_str();
  const bool isContainer =
      nlohmann::json::accept(text) && text.find_first_of("[{") < text.find('"');
  const bool isDeep =
      std::count(text.begin(), text.end(), '[') + std::count(text.begin(), text.end(), '{') >
      static_cast<std::ptrdiff_t>(kJsonMaxDepth);
  const char* const end = jsonFindEnd(text.c_str());
  fuzz::require(end ? *end == '}' || *end == ']' : !isContainer || isDeep);
  writeRecords(input);
  return 0;
}
