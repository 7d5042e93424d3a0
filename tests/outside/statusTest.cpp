#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>

#include "tests/support/model.h"

namespace test {

namespace {

using tStatusRules = tModel;

bool refuseRoom(tStatusRecord*, std::uint32_t) { return false; }

// Managers of a caller's own. Each gives exactly what it says, so that whoever goes beyond is seen.
bool provide(tStatusRecord* record, std::uint32_t capacity, std::uint32_t size) {
  if (capacity == 0) {
    std::free(record->text);
    record->text = nullptr;
    record->capacity = 0;
    return true;
  }
  char* const buffer = static_cast<char*>(std::malloc(size ? size : 1));
  std::memset(buffer, 'x', size);
  if (record->text) std::memcpy(buffer, record->text, std::min(size, record->capacity));
  std::free(record->text);
  record->text = buffer;
  record->capacity = size;
  return true;
}

bool provideExactly(tStatusRecord* record, std::uint32_t capacity) {
  return provide(record, capacity, capacity);
}

template <std::uint32_t Size>
bool provideAlways(tStatusRecord* record, std::uint32_t capacity) {
  return provide(record, capacity, Size);
}

// Hands out a buffer with `text` in it from the second request on.
template <const char* Text>
bool provideWithText(tStatusRecord* record, std::uint32_t capacity) {
  const bool isFirst = record->text == nullptr;
  provide(record, capacity, capacity);
  if (!isFirst && record->text) std::strncpy(record->text, Text, capacity);
  return true;
}

constexpr char kOther[] = "[1]";
constexpr char kNoJson[] = "no";
constexpr char kEndless[] =
    "this text is longer than most of the buffers that are asked for at first";

bool provideGarbageAndRefuse(tStatusRecord* record, std::uint32_t capacity) {
  provide(record, capacity, capacity);
  if (record->text) std::memset(record->text, 'y', capacity);
  return capacity == 0;
}

bool provideNothing(tStatusRecord* record, std::uint32_t capacity) {
  provide(record, 0, 0);
  record->capacity = capacity;
  return true;
}

bool claimRoom(tStatusRecord*, std::uint32_t) { return true; }

bool startWithGarbage(tStatusRecord* record, std::uint32_t capacity) {
  if (record->text) return provideExactly(record, capacity);
  provide(record, capacity, capacity ? 300 : 0);
  if (record->text) std::strcpy(record->text, "from before");
  return true;
}

TEST_F(tStatusRules, anErrorStopsEveryCall) {
  describe("", "");
  number(session_, 1);
  const std::string first = status_.text();
  EXPECT_FALSE(varmex_openPXISession(0, status_));
  EXPECT_EQ(varmex_getU32Attribute(nullptr, 0, status_), 0U);
  EXPECT_EQ(status_.text(), first);
  EXPECT_EQ(status_.code(), -380756);
}

TEST_F(tStatusRules, aWarningStandsUntilAnError) {
  describe("", "");
  status_.record().code = 5;
  EXPECT_EQ(text(session_, varmex_str_Version), "19.5.0");
  EXPECT_EQ(status_.code(), 5);
  number(session_, 1);
  EXPECT_EQ(takeFailure(), notApplicable(1));
}

TEST_F(tStatusRules, aTextHasItsForm) {
  describe("", "");
  number(session_, 1);
  const tStatusRecord& record = status_.record();
  ASSERT_EQ(record.capacity, 512U);
  const std::size_t length = std::strlen(record.text);
  for (std::size_t n = length; n < 511; ++n) ASSERT_EQ(record.text[n], '\0') << n;
  EXPECT_EQ(record.text[511], 'J');
}

TEST_F(tStatusRules, recordsWithoutRoomCarryTheCode) {
  describe("", "");
  for (auto reallocate : {refuseRoom, claimRoom, static_cast<decltype(&refuseRoom)>(nullptr)}) {
    tStatusRecord record{0, 0, reallocate, nullptr};
    EXPECT_EQ(varmex_getU32Attribute(session_.get(), 1, &record), 0U);
    EXPECT_EQ(record.code, -380756);
    EXPECT_EQ(record.text, nullptr);
    tStatusRecord claims{0, 512, reallocate, nullptr};
    EXPECT_EQ(varmex_getU32Attribute(session_.get(), 1, &claims), 0U);
    EXPECT_EQ(claims.code, -380756);
  }
  EXPECT_EQ(varmex_getU32Attribute(session_.get(), 1, nullptr), 0U);
  EXPECT_TRUE(tItem(varmex_openPXISession(0, nullptr)));
}

TEST_F(tStatusRules, whateverAManagerDoesTheRecordHasItsForm) {
  machine_.writePxiSys("[System]\n");
  const struct {
    const char* what;
    bool (*reallocate)(tStatusRecord*, std::uint32_t);
    bool isComplete;
  } cases[] = {
      {"exact", provideExactly, true},
      {"large", provideAlways<300>, true},
      {"garbage at first", startWithGarbage, true},
      {"nothing", provideAlways<0>, false},
      {"one byte", provideAlways<1>, false},
      {"too small for a text", provideAlways<3>, false},
      {"too small", provideAlways<40>, false},
      {"another text", provideWithText<kOther>, false},
      {"no JSON", provideWithText<kNoJson>, false},
      {"without an end", provideWithText<kEndless>, false},
      {"garbage", provideGarbageAndRefuse, false},
      {"null", provideNothing, false},
  };
  for (const auto& [what, reallocate, isComplete] : cases) {
    tStatusRecord record{0, 0, reallocate, nullptr};
    EXPECT_EQ(varmex_openPXISession(0, &record), nullptr);
    EXPECT_EQ(record.code, -380757) << what;
    EXPECT_TRUE(record.capacity == 0 || std::memchr(record.text, 0, record.capacity)) << what;
    const auto json = nlohmann::json::parse(varmex_statusText(&record), nullptr, false);
    EXPECT_EQ(json.contains("varmex_debug"), isComplete) << what;
    EXPECT_TRUE(record.capacity < 4 || record.text[record.capacity - 1] == 'J') << what;
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
