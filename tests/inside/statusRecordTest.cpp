// Status records, and what writes them.

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "ostrel/quarks/failure.h"
#include "ostrel/quarks/refusal.h"
#include "ostrel/quarks/synchronization.h"
#include "ostrel/quarks/throwingStatus.h"
#include "ostrel/quarks/trace.h"
#include "tests/support/status.h"

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

class tOwned : public test::tStatus {
 public:
  explicit tOwned(std::int32_t code = 0, const char* text = nullptr,
                  bool (*reallocate)(tStatusRecord*, std::uint32_t) = statusReallocate) {
    record() = {code, 0, reallocate, nullptr};
    if (text) statusSetText(record(), text);
  }

  std::string state() {
    return std::to_string(code()) + ' ' + text() + ' ' + std::to_string(record().capacity);
  }
};

TEST(Status, mergesByRule) {
  const struct {
    std::int32_t current, incoming;
    bool replaced;
  } cases[] = {{0, 0, false}, {0, 5, true},   {0, -5, true},  {5, 0, false},  {5, 6, false},
               {5, -6, true}, {-5, 0, false}, {-5, 6, false}, {-5, -6, false}};
  const std::string before = R"({"t":1})", after = R"({"s":1})";
  for (const auto& [current, incoming, replaced] : cases) {
    for (const auto reallocate : {statusReallocate, varmex_reallocateStatus}) {
      tOwned target(current, before.c_str(), reallocate);
      tOwned source(incoming, after.c_str());
      EXPECT_EQ(statusMerge(*target, *source), replaced);
      EXPECT_EQ(target.code(), replaced ? incoming : current);
      EXPECT_EQ(target.text(), replaced ? after : before);
      EXPECT_EQ(source.text(), replaced && reallocate == statusReallocate ? "{}" : after)
          << "a text that merges moves, between records of one policy";
      EXPECT_EQ(source.code(), incoming);
    }
  }
}

TEST(Status, bufferSizes) {
  tOwned owned;
  EXPECT_FALSE(statusReallocate(owned, 0x80000000));
  EXPECT_TRUE(statusReallocate(owned, 513));
  EXPECT_EQ(owned.state(), "0 {} 1024");
  EXPECT_TRUE(statusSetText(*owned, std::string(1023, 'x').c_str()));
  EXPECT_EQ(owned.record().capacity, 2048U);
  EXPECT_TRUE(statusReallocate(owned, 4));
  EXPECT_EQ(owned.record().capacity, 2048U);
  std::string endless(512, 'x');
  tStatusRecord shorter{0, 4, nullptr, endless.data()};
  EXPECT_FALSE(statusReallocate(&shorter, 8)) << "the text is longer than the record says";
  char small[4] = "ab";
  EXPECT_EQ(statusFormatText(small, 3, "{}"), nullptr);
  EXPECT_STREQ(small, "ab");
  EXPECT_NE(statusFormatText(small, 4, "{}"), nullptr);
  EXPECT_EQ(small[3], 'J');
}

// Of others, too, who fill in part of it, or no end of a text.
TEST(FixedStatus, tellsWhatItHas) {
  const std::string head(49, 'a'), tail(49, 'b'), hundred(100, 'f');
  const std::string longName = head + "xxx" + tail;
  const struct {
    std::int32_t code;
    const char* component;
    const char* file;
    std::int32_t before;
    std::string text;
    std::uint32_t size = kFixedStatusSize;
    bool isEndless = false;
  } cases[] = {
      {0, "c", "f", 0, "{}"},
      {-7, "", "f", 0, R"({"file":"f","line":1})"},
      {-7, "c", "", 0, R"({"component":"c"})"},
      {-7, "", "", 0, "{}"},
      {-7, "c", "f", -1, R"({"b":1})"},
      {-7, "\"", hundred.c_str(), 1, R"({"file":")" + hundred + R"(","line":1,"component":"\""})"},
      {-7, "component-name", longName.c_str(), 0,
       R"({"file":")" + head + ".." + tail + R"(","line":1,"component":"component"})"},
      {-7, "c", "f", 0,
       R"({"file":")" + std::string(101, 'f') + R"(","line":1,"component":"cccccccccc"})",
       kFixedStatusSize, true},
      {-7, "c", "f", 2, "{}", 8, true},
  };
  for (const auto& [code, component, file, before, text, size, isEndless] : cases) {
    tFixedStatus fixed;
    fixed.size = size;
    fixedStatusSet(fixed, code, component, file, 1);
    fixedStatusSet(fixed, code, "late", "late", 2);
    EXPECT_TRUE(size == kFixedStatusSize || *fixed.file == '\0');
    if (isEndless) {
      std::memset(fixed.file, 'f', sizeof fixed.file);
      std::memset(fixed.component, 'c', sizeof fixed.component);
    }
    tOwned owned(before, before == 0 ? nullptr : R"({"b":1})");
    EXPECT_TRUE(statusFromFixed(fixed, *owned));
    EXPECT_EQ(owned.text(), text);
    EXPECT_EQ(owned.code(), before < 0 ? before : code);
  }
}

template <class Status>
std::string thrownBy(void (*report)(Status&)) {
  try {
    tThrowingStatus<Status> guard;
    report(guard);
  } catch (const corerr::Exception& exception) {
    EXPECT_STREQ(static_cast<const std::exception&>(exception).what(),
                 static_cast<const corerr::ExceptionBase&>(exception).what());
    return std::to_string(exception.record().code) + ' ' + exception.what();
  }
  return "nothing";
}

TEST(ThrowingStatus, throwsWhatItHolds) {
  const auto fillsRecord = [](tStatusRecord& status) {
    status.code = -3;
    statusSetText(status, R"({"a":1})");
  };
  EXPECT_EQ(thrownBy<tStatusRecord>(fillsRecord), R"(-3 {"a":1})");
  EXPECT_EQ(thrownBy<tFixedStatus>([](auto& status) { fixedStatusSet(status, -4, "c", "f", 2); }),
            R"(-4 {"file":"f","line":2,"component":"c"})");
  EXPECT_EQ(thrownBy<std::int32_t>([](auto& status) { status = -5; }), "-5 ");
  EXPECT_EQ(thrownBy<std::int32_t>([](auto& status) { status = 5; }), "nothing");
}

// But a destructor that runs while another exception travels may itself call what throws.
TEST(ThrowingStatus, yieldsToAFailureThatTravels) {
  struct tHost {
    ~tHost() {
      thrown = thrownBy<std::int32_t>([](auto& status) { status = -5; });
    }
    std::string& thrown;
  };
  std::string thrown;
  const auto work = [&] {
    const tHost host{thrown};
    tThrowingStatus<tStatusRecord> guard;
    statusSetText(guard, R"({"lost":1})");
    guard.get()->code = -3;
    throw std::runtime_error("first");
  };
  EXPECT_THROW(work(), std::runtime_error);
  EXPECT_EQ(thrown, "-5 ");
}

TEST(CriticalSection, isRecursiveAndHonoursItsStatus) {
  tFixedStatus status;
  tCriticalSection lock(status);
  ASSERT_TRUE(lock.isInitialized());
  lock.lock();
  lock.lock();
  lock.unlock();
  lock.unlock();
  status.code = -1;
  EXPECT_FALSE(tCriticalSection(status).isInitialized());
}

// Where the debug output is this program's own it can be read.
TEST(Trace, cutsLongTexts) {
  tConsoleTraceDestination console;
  tTrace trace(console);
  testing::internal::CaptureStderr();
  trace("%d%s", 3, std::string(600, 'x').c_str());
  const std::string shown = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(shown.empty() || shown == '3' + std::string(510, 'x')) << shown;
}

// A refusal alone tells kinds of text apart.
void describe(auto& detail, const std::string& value) {
  detail.open("first");
  detail.text("value", value.c_str());
  detail.i32("least", -2147483647 - 1);
  if constexpr (std::is_same_v<decltype(detail), tRefusal&>) {
    detail.text("literal", tLiteral("of the program")).name("name", tShortName("Chassis", 7U));
  } else {
    detail.text("literal", "of the program");
    detail.text("name", "Chassis7");
  }
  detail.close();
  detail.u32("most", 4294967295U);
  detail.open("last");
}

// A refusal leaves every record as an exception with the same detail does, which writes its text
// key by key and merges it, and a direct one as writing into the record does.
TEST(Refusal, leavesRecordsAsExceptionsDo) {
  constexpr std::uint32_t kStandard = ~0U;
  const std::pair<std::int32_t, const char*> records[] = {
      {0, nullptr}, {5, R"({"w":1})"}, {-5, R"({"e":1})"}};
  for (const std::string& value :
       {std::string(), std::string("plain"), std::string("quo\"te \\ \x01 \xC3\xA4"),
        std::string(280, 'x'), std::string(330, 'x'), std::string(200, '\n'),
        std::string(3000, 'x')}) {
    tRefusal refusal(kCode, kPosition);
    describe(refusal, value);
    tRefusal direct = refusal;
    direct.direct();
    const auto writes = [&value](tStatusRecord& record) {
      tFailureText text(record, kCode, kPosition);
      describe(text, value);
    };
    const auto throws = [&writes](tStatusRecord& record) {
      tOwned own;
      writes(*own);
      statusMerge(record, *own);
    };
    for (const std::uint32_t bound : {0U, 4U, 60U, 200U, 1000000U, kStandard}) {
      largestBuffer = bound;
      for (const auto& [code, text] : records) {
        const auto stateAfter = [&, code = code, text = text](const auto& report) {
          tOwned caller(code, text, bound == kStandard ? varmex_reallocateStatus : exactReallocate);
          report(*caller);
          return caller.state();
        };
        EXPECT_EQ(stateAfter([&](auto& record) { refusal.reportTo(record); }), stateAfter(throws));
        EXPECT_EQ(stateAfter([&](auto& record) { direct.reportTo(record); }), stateAfter(writes));
      }
    }
  }
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
