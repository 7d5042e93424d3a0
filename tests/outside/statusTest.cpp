#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>

#include "tests/support/model.h"

namespace test {

namespace {

using tStatusRules = tModel;

bool refuseRoom(tStatusRecord*, std::uint32_t) { return false; }
bool claimRoom(tStatusRecord*, std::uint32_t) { return true; }

constexpr std::uint32_t kAsAsked = ~0U;
constexpr const char* kEndless =
    "this text is longer than most of the buffers that are asked for at first";

// What a manager of a caller's own does.
struct tManner {
  const char* what;
  std::uint32_t size = kAsAsked;  // of each buffer
  bool isComplete = false;        // whether the whole of a failure finds room
  const char* first = nullptr;    // what stands in its first buffer
  const char* later = nullptr;    // what stands in others in the place of the text
  bool refuses = false;
  bool providesNull = false;
};
const tManner* manner;

// Gives exactly what it says, so that whoever goes beyond is seen.
bool provide(tStatusRecord* record, std::uint32_t capacity) {
  const std::uint32_t size = manner->size == kAsAsked ? capacity : manner->size;
  char* buffer = nullptr;
  if (capacity > 0 && !manner->providesNull) {
    buffer = static_cast<char*>(std::malloc(size ? size : 1));
    std::memset(buffer, 'x', size);
    if (record->text) std::memcpy(buffer, record->text, std::min(size, record->capacity));
    const char* const text = record->text ? manner->later : manner->first;
    if (text) std::strncpy(buffer, text, size);
  }
  std::free(record->text);
  record->text = buffer;
  record->capacity = capacity > 0 ? size : 0;
  return capacity == 0 || !manner->refuses;
}

TEST_F(tStatusRules, anErrorHasItsFormAndStopsEveryCall) {
  describe("", "");
  number(session_, 1);
  const tStatusRecord& record = status_.record();
  ASSERT_EQ(record.capacity, 512U);
  const std::string first = record.text;
  for (std::size_t n = first.size(); n < 511; ++n) ASSERT_EQ(record.text[n], '\0') << n;
  EXPECT_EQ(record.text[511], 'J');
  EXPECT_FALSE(varmex_openPXISession(0, status_));
  EXPECT_EQ(varmex_getU32Attribute(nullptr, 0, status_), 0U);
  EXPECT_EQ(status_.text(), first);
  EXPECT_EQ(status_.code(), -380756);
}

TEST_F(tStatusRules, recordsWithoutRoomCarryTheCode) {
  describe("", "");
  for (auto reallocate : {refuseRoom, claimRoom, static_cast<decltype(&refuseRoom)>(nullptr)}) {
    for (const std::uint32_t claimed : {0U, 512U}) {
      tStatusRecord record{0, claimed, reallocate, nullptr};
      EXPECT_EQ(varmex_getU32Attribute(session_.get(), 1, &record), 0U);
      EXPECT_EQ(record.code, -380756);
      EXPECT_EQ(record.text, nullptr);
    }
  }
  EXPECT_EQ(varmex_getU32Attribute(session_.get(), 1, nullptr), 0U);
  EXPECT_TRUE(tItem(varmex_openPXISession(0, nullptr)));
}

TEST_F(tStatusRules, whateverAManagerDoesTheRecordHasItsForm) {
  machine_.writePxiSys("[System]\n");
  const tManner manners[] = {
      {.what = "exact", .isComplete = true},
      {.what = "large", .size = 300, .isComplete = true},
      {.what = "garbage at first", .size = 300, .isComplete = true, .first = "from before"},
      {.what = "nothing", .size = 0},
      {.what = "one byte", .size = 1},
      {.what = "too small for a text", .size = 3},
      {.what = "too small", .size = 40},
      {.what = "another text", .later = "[1]"},
      {.what = "no JSON", .later = "no"},
      {.what = "without an end", .later = kEndless},
      {.what = "garbage", .first = kEndless, .refuses = true},
      {.what = "null", .providesNull = true}};
  for (const tManner& each : manners) {
    manner = &each;
    tStatusRecord record{0, 0, provide, nullptr};
    EXPECT_EQ(varmex_openPXISession(0, &record), nullptr);
    EXPECT_EQ(record.code, -380757) << each.what;
    EXPECT_TRUE(record.capacity == 0 || std::memchr(record.text, 0, record.capacity)) << each.what;
    const auto json = nlohmann::json::parse(varmex_statusText(&record), nullptr, false);
    EXPECT_EQ(json.contains("varmex_debug"), each.isComplete) << each.what;
    EXPECT_TRUE(record.capacity < 4 || record.text[record.capacity - 1] == 'J') << each.what;
    varmex_releaseStatus(&record);
  }
}

TEST_F(tStatusRules, aTextThatIsNoneIsReplaced) {
  describe("", "");
  char buffer[400];
  std::memset(buffer, 'z', sizeof buffer);
  tStatusRecord record{0, sizeof buffer, refuseRoom, buffer};
  EXPECT_EQ(varmex_getU32Attribute(session_.get(), 1, &record), 0U);
  EXPECT_EQ(record.code, -380756);
  buffer[sizeof buffer - 1] = '\0';
  EXPECT_FALSE(nlohmann::json::parse(buffer, nullptr, false).is_discarded()) << buffer;
}

}  // namespace

}  // namespace test
