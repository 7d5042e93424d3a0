#include <cstring>
#include <nlohmann/json.hpp>

#include "tests/support/model.h"

namespace test {

namespace {

using tStatusRules = tModel;

bool refuse(tStatusRecord*, std::uint32_t) { return false; }

bool claimRoom(tStatusRecord*, std::uint32_t) { return true; }

// A buffer of a caller's own that knows nothing of the library's form.
char plainBuffer[300];
bool providePlainBuffer(tStatusRecord* record, std::uint32_t capacity) {
  if (capacity > sizeof plainBuffer) return false;
  if (!record->text) std::memset(plainBuffer, 'x', sizeof plainBuffer);
  if (!record->text) std::strcpy(plainBuffer, "{}");
  record->text = plainBuffer;
  record->capacity = sizeof plainBuffer;
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
  EXPECT_TRUE(notApplicable(R"({"attribute":1})"));
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
  for (auto reallocate : {refuse, claimRoom, static_cast<decltype(&refuse)>(nullptr)}) {
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

TEST_F(tStatusRules, aBufferOfTheCallersOwnIsBroughtIntoForm) {
  describe("", "");
  tStatusRecord record{0, 0, providePlainBuffer, nullptr};
  EXPECT_EQ(varmex_getU32Attribute(session_.get(), 1, &record), 0U);
  EXPECT_EQ(record.code, -380756);
  EXPECT_TRUE(nlohmann::json::parse(record.text).contains("varmex_debug"));
  EXPECT_EQ(record.text[record.capacity - 1], 'J');
}

TEST_F(tStatusRules, aTextThatIsNoneIsReplaced) {
  describe("", "");
  char buffer[400];
  std::memset(buffer, 'z', sizeof buffer);
  tStatusRecord record{0, sizeof buffer, refuse, buffer};
  EXPECT_EQ(varmex_getU32Attribute(session_.get(), 1, &record), 0U);
  EXPECT_EQ(record.code, -380756);
  buffer[sizeof buffer - 1] = '\0';
  EXPECT_FALSE(nlohmann::json::parse(buffer, nullptr, false).is_discarded()) << buffer;
}

extern "C" int useHeaderFromC(void);

TEST_F(tStatusRules, theHeaderServesC) { EXPECT_EQ(useHeaderFromC(), 0); }

}  // namespace

}  // namespace test
