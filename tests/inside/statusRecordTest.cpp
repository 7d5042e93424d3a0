#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "ostrel/quarks/failure.h"
#include "ostrel/quarks/synchronization.h"
#include "ostrel/quarks/throwingStatus.h"
#include "ostrel/quarks/trace.h"

namespace varmex {

namespace {

bool otherReallocate(tStatusRecord* record, std::uint32_t capacity) {
  return varmex_reallocateStatus(record, capacity);
}

class tOwned {
 public:
  explicit tOwned(std::int32_t code = 0, const char* text = nullptr) {
    record.code = code;
    if (text) statusSetText(record, text);
  }
  ~tOwned() { statusReleaseText(record); }
  tOwned(const tOwned&) = delete;
  tOwned& operator=(const tOwned&) = delete;
  std::string text() const { return record.text ? record.text : ""; }

  tStatusRecord record = makeStatus();
};

TEST(Status, mergesByRule) {
  const struct {
    std::int32_t current, incoming;
    bool replaced;
  } cases[] = {{0, 0, false}, {0, 5, true},   {0, -5, true},  {5, 0, false},  {5, 6, false},
               {5, -6, true}, {-5, 0, false}, {-5, 6, false}, {-5, -6, false}};
  for (const auto& [current, incoming, replaced] : cases) {
    tOwned target(current, "{\"t\":1}");
    tOwned source(incoming, "{\"s\":1}");
    EXPECT_EQ(statusMerge(target.record, source.record), replaced);
    EXPECT_EQ(target.record.code, replaced ? incoming : current);
    EXPECT_EQ(target.text(), replaced ? "{\"s\":1}" : "{\"t\":1}");
    EXPECT_EQ(source.text(), replaced ? "" : "{\"s\":1}") << "a text that merges moves";
    EXPECT_EQ(source.record.code, incoming);
  }
}

TEST(Status, copiesTheTextBetweenPolicies) {
  tOwned source(-1, "{\"s\":1}");
  tOwned target;
  target.record.reallocate = otherReallocate;
  EXPECT_TRUE(statusMerge(target.record, source.record));
  EXPECT_EQ(target.text(), "{\"s\":1}");
  EXPECT_EQ(source.text(), "{\"s\":1}");
}

TEST(Status, bufferSizes) {
  tOwned owned;
  EXPECT_FALSE(statusReallocate(&owned.record, 0x80000000));
  EXPECT_TRUE(statusReallocate(&owned.record, 513));
  EXPECT_EQ(owned.record.capacity, 1024U);
  EXPECT_EQ(owned.text(), "{}");
  EXPECT_TRUE(statusReallocate(&owned.record, 4));
  EXPECT_EQ(owned.record.capacity, 1024U);
  char small[4] = "ab";
  EXPECT_EQ(statusFormatText(small, 3, "{}"), nullptr);
  EXPECT_STREQ(small, "ab");
  EXPECT_NE(statusFormatText(small, 4, "{}"), nullptr);
  EXPECT_EQ(small[3], 'J');
}

TEST(FixedStatus, keepsBothEndsOfALongFileName) {
  const std::string head(49, 'a');
  const std::string tail(49, 'b');
  tFixedStatus fixed;
  fixedStatusSet(fixed, -7, "component-name", (head + std::string(22, 'x') + tail).c_str(), 12);
  EXPECT_STREQ(fixed.file, (head + ".." + tail).c_str());
  EXPECT_STREQ(fixed.component, "component");
  fixedStatusSet(fixed, -8, "late", "late", 1);
  EXPECT_EQ(fixed.code, -7);
  tOwned owned;
  EXPECT_TRUE(statusFromFixed(fixed, owned.record));
  EXPECT_EQ(owned.record.code, -7);
  EXPECT_EQ(owned.text(),
            "{\"file\":\"" + head + ".." + tail + "\",\"line\":12,\"component\":\"component\"}");
  const std::string hundred(100, 'c');
  tFixedStatus exact;
  fixedStatusSet(exact, 3, "", hundred.c_str(), 1);
  EXPECT_EQ(exact.file, hundred);
}

// Of others, too, who fill in part of it, or no end of a text.
TEST(FixedStatus, tellsWhatItHas) {
  const std::string hundred(100, 'f');
  const struct {
    std::int32_t code;
    const char* component;
    const char* file;
    std::int32_t before;
    std::string text;
  } cases[] = {
      {0, "c", "f", 0, "{}"},
      {-7, "", "f", 0, R"({"file":"f","line":1})"},
      {-7, "c", "", 0, R"({"component":"c"})"},
      {-7, "", "", 0, "{}"},
      {-7, "c", "f", -1, R"({"b":1})"},
      {-7, "\"", hundred.c_str(), 1, R"({"file":")" + hundred + R"(","line":1,"component":"\""})"},
  };
  for (const auto& [code, component, file, before, text] : cases) {
    tFixedStatus fixed;
    fixedStatusSet(fixed, code, component, file, 1);
    tOwned owned(before, before == 0 ? nullptr : R"({"b":1})");
    EXPECT_TRUE(statusFromFixed(fixed, owned.record));
    EXPECT_EQ(owned.text().empty() ? "{}" : owned.text(), text);
  }
}

TEST(FixedStatus, smallRecordsCarryTheCode) {
  tFixedStatus fixed;
  fixed.size = 8;
  fixedStatusSet(fixed, -7, "c", "f", 12);
  EXPECT_STREQ(fixed.file, "");
  tOwned owned(2, "{\"w\":1}");
  EXPECT_TRUE(statusFromFixed(fixed, owned.record));
  EXPECT_EQ(owned.text(), "{}");
  EXPECT_EQ(owned.record.code, -7);
}

template <class Status>
std::string thrownBy(void (*report)(Status&), std::int32_t& code) {
  try {
    tThrowingStatus<Status> guard;
    report(guard);
  } catch (const corerr::Exception& exception) {
    code = exception.record().code;
    EXPECT_STREQ(static_cast<const std::exception&>(exception).what(),
                 static_cast<const corerr::ExceptionBase&>(exception).what());
    return exception.what();
  }
  code = 0;
  return "nothing";
}

TEST(ThrowingStatus, throwsWhatItHolds) {
  std::int32_t code = 0;
  EXPECT_EQ(thrownBy<tStatusRecord>(
                [](tStatusRecord& status) {
                  status.code = -3;
                  statusSetText(status, "{\"a\":1}");
                },
                code),
            "{\"a\":1}");
  EXPECT_EQ(code, -3);
  EXPECT_EQ(thrownBy<tFixedStatus>(
                [](tFixedStatus& status) { fixedStatusSet(status, -4, "c", "f", 2); }, code),
            "{\"file\":\"f\",\"line\":2,\"component\":\"c\"}");
  EXPECT_EQ(code, -4);
  EXPECT_EQ(thrownBy<std::int32_t>([](std::int32_t& status) { status = -5; }, code), "");
  EXPECT_EQ(code, -5);
  EXPECT_EQ(thrownBy<std::int32_t>([](std::int32_t& status) { status = 5; }, code), "nothing");
}

TEST(ThrowingStatus, yieldsToAFailureThatTravels) {
  const auto work = [] {
    tThrowingStatus<tStatusRecord> guard;
    statusSetText(guard, "{\"lost\":1}");
    static_cast<tStatusRecord&>(guard).code = -3;
    throw std::runtime_error("first");
  };
  EXPECT_THROW(work(), std::runtime_error);
}

// A destructor that runs while a host's own exception travels may still call the library.
TEST(ThrowingStatus, throwsInsideAnUnwindingHost) {
  struct tHost {
    ~tHost() {
      thrownBy<std::int32_t>([](std::int32_t& status) { status = -5; }, code);
    }
    std::int32_t& code;
  };
  std::int32_t code = 0;
  try {
    const tHost host{code};
    throw 1;
  } catch (int) {
  }
  EXPECT_EQ(code, -5);
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

TEST(Trace, cutsLongTexts) {
  class tRecorder : public iTraceDestination {
   public:
    void write(const char* format, std::va_list arguments) override {
      char text[64];
      std::vsnprintf(text, sizeof text, format, arguments);
      written = text;
    }
    std::string written;
  };
  tRecorder recorder;
  tTrace trace(recorder);
  trace("%d lines of %s", 3, "text");
  EXPECT_EQ(recorder.written, "3 lines of text");
  tConsoleTraceDestination console;
  testing::internal::CaptureStderr();
  tTrace toConsole(console);
  toConsole("%s", std::string(600, 'x').c_str());
  const std::string shown = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(shown.empty() || shown == std::string(511, 'x')) << shown;
}

}  // namespace

}  // namespace varmex
