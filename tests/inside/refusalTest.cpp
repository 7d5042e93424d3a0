#include "ostrel/quarks/refusal.h"

#include <gtest/gtest.h>

#include <string>

#include "ostrel/quarks/failure.h"

namespace varmex {

namespace {

constexpr tErrorCode kCode{-7, "constant"};
constexpr tSourcePosition kPosition{"a file", 12, "part"};

std::uint32_t largestBuffer;  // that a caller's policy gives

// As many bytes as it is asked for, up to a bound.
bool exactReallocate(tStatusRecord* record, std::uint32_t capacity) {
  if (capacity > largestBuffer) return false;
  char* const text = capacity > 0 ? static_cast<char*>(std::malloc(capacity)) : nullptr;
  if (text) varmex_formatStatusText(text, capacity, record->text ? record->text : "{}");
  std::free(record->text);
  record->text = text;
  record->capacity = capacity;
  return true;
}

bool standardReallocate(tStatusRecord* record, std::uint32_t capacity) {
  return varmex_reallocateStatus(record, capacity);
}

class tCallersRecord {
 public:
  tCallersRecord(bool (*reallocate)(tStatusRecord*, std::uint32_t), const char* text)
      : record{text ? 5 : 0, 0, reallocate, nullptr} {
    if (text) statusSetText(record, text);
  }
  tCallersRecord(const tCallersRecord&) = delete;
  tCallersRecord& operator=(const tCallersRecord&) = delete;
  ~tCallersRecord() { statusReleaseText(record); }

  std::string state() const {
    return std::to_string(record.code) + ' ' + (record.text ? record.text : "-") + ' ' +
           std::to_string(record.capacity);
  }

  tStatusRecord record;
};

// The kinds of text that a refusal alone tells apart.
void describeNames(tRefusal& refusal) {
  refusal.text("literal", tLiteral("of the program")).name("name", tShortName("Chassis", 7U));
}
void describeNames(tFailureText& text) {
  text.text("literal", "of the program");
  text.text("name", "Chassis7");
}

template <class Report>
std::string stateAfter(bool (*reallocate)(tStatusRecord*, std::uint32_t), const char* before,
                       Report report) {
  tCallersRecord caller(reallocate, before);
  report(caller.record);
  return caller.state();
}

// A refusal leaves every record as an exception with the same detail does, which writes its text
// key by key and merges it, and a direct one as writing into the record does.
TEST(Refusal, leavesRecordsAsExceptionsDo) {
  const std::string texts[] = {"",
                               "plain",
                               "quo\"te \\ \x01 \xC3\xA4",
                               std::string(280, 'x'),
                               std::string(330, 'x'),
                               std::string(200, '\n'),
                               std::string(3000, 'x')};
  for (const std::string& value : texts) {
    const auto describeTo = [&](auto& detail) {
      detail.open("first");
      detail.text("value", value.c_str());
      detail.i32("least", -2147483647 - 1);
      describeNames(detail);
      detail.close();
      detail.u32("most", 4294967295U);
      detail.open("last");
    };
    tRefusal refusal(kCode, kPosition);
    describeTo(refusal);
    tRefusal direct = refusal;
    direct.direct();
    for (const auto reallocate : {standardReallocate, exactReallocate}) {
      for (const char* const before : {static_cast<const char*>(nullptr), "{\"w\":1}"}) {
        for (const std::uint32_t bound : {0U, 4U, 60U, 200U, 1000000U}) {
          largestBuffer = bound;
          const auto expected = stateAfter(reallocate, before, [&](tStatusRecord& record) {
            tStatusRecord own = makeStatus();
            tFailureText text(own, kCode, kPosition);
            describeTo(text);
            statusMerge(record, own);
            statusReleaseText(own);
          });
          EXPECT_EQ(stateAfter(reallocate, before,
                               [&](tStatusRecord& record) { refusal.reportTo(record); }),
                    expected);
          const auto expectedDirect = stateAfter(reallocate, before, [&](tStatusRecord& record) {
            tFailureText text(record, kCode, kPosition);
            describeTo(text);
          });
          EXPECT_EQ(stateAfter(reallocate, before,
                               [&](tStatusRecord& record) { direct.reportTo(record); }),
                    expectedDirect);
        }
      }
    }
  }
}

TEST(Refusal, keepsAnErrorAndItsText) {
  tCallersRecord caller(standardReallocate, "{\"e\":1}");
  caller.record.code = -5;
  tRefusal(kCode, kPosition).reportTo(caller.record);
  EXPECT_EQ(caller.state(), "-5 {\"e\":1} 512");
}

TEST(ShortName, cutsOffWhatFindsNoRoom) {
  EXPECT_EQ(tShortName("Chassis", 4294967295U).add("Slot").add(0U).view(),
            "Chassis4294967295Slot0");
  const std::string most(tShortName::kCapacity, 'x');
  EXPECT_EQ(tShortName(most + "y").add("z").view(), most);
  EXPECT_EQ(tShortName(most.substr(2)).add(123U).view(), most.substr(2));
}

}  // namespace

}  // namespace varmex
