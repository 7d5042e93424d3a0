#include <gtest/gtest.h>

#include <string>

#include "ostrel/quarks/jsonScanner.h"
#include "ostrel/quarks/jsonWriter.h"
#include "ostrel/quarks/status.h"
#include "telmar/TelmarUtils.h"
#include "tests/support/texts.h"

namespace varmex {

namespace {

// A buffer in the writer's form.
class tBuffer {
 public:
  tBuffer(const char* text, std::size_t size) : bytes_(size, '\0') {
    statusFormatText(bytes_.data(), size, text);
  }
  char* end() { return jsonFindEnd(bytes_.data()); }
  char* front() { return bytes_.data(); }
  std::string text() const { return bytes_.c_str(); }
  char last() const { return bytes_.back(); }

 private:
  std::string bytes_;
};

TEST(Reply, takesTextsOfAnyLength) {
  telmar::Reply reply;
  std::string expected;
  for (std::size_t size = 0; size < 60; ++size) {
    const std::string text = telmar::quote(std::string(size, static_cast<char>('A' + size)));
    reply.addText(text);
    expected += (size > 0 ? "," : "") + text;
  }
  EXPECT_EQ(reply.close(), '[' + expected + ']');
}

TEST(JsonWriter, addsAtEitherEnd) {
  tBuffer object("{ }", 200);
  char* cursor = jsonAddString(object.end(), "a", "x\b\t\n\f\ry\"\\\x1F\x7F\xC3\xA4");
  cursor = jsonAddI32(cursor, "b", -2147483647 - 1);
  cursor = jsonAddU32(cursor, nullptr, 4294967295U);
  cursor = jsonAddU64(cursor, "d\n", 18446744073709551615U);
  cursor = jsonAddObject(cursor, "e");
  jsonAddRaw(cursor - 1, "f", "[1]");
  jsonAddU32(object.front(), "z", 1);
  EXPECT_EQ(object.text(),
            R"({"z":1, "a":"x\b\t\n\f\ry\"\\\u001f\u007fä","b":-2147483648,4294967295,)"
            R"("d\n":18446744073709551615,"e":{"f":[1]}})");
  EXPECT_EQ(object.last(), 'J');
  tBuffer array("[]", 64);
  jsonAddU32(jsonAddU32(array.front(), nullptr, 1), nullptr, 2);
  jsonAddU32(array.front(), nullptr, 0);
  EXPECT_EQ(array.text(), "[0,1,2]");
  tBuffer nested("[[ ]]", 64);
  jsonAddU32(nested.front(), nullptr, 0);
  EXPECT_EQ(nested.text(), "[0[ ]]") << "an empty container behind the bracket counts as its own";
}

TEST(JsonWriter, fillsABufferToItsLastByte) {
  // "{}", six bytes of a pair, the terminator and the mark.
  for (const std::size_t size : {9U, 10U}) {
    tBuffer buffer("{}", size);
    const bool fits = size == 10;
    EXPECT_EQ(jsonAddRaw(buffer.end(), "ab", "1") != nullptr, fits);
    EXPECT_EQ(buffer.text(), fits ? "{\"ab\":1}" : "{}");
    EXPECT_EQ(buffer.last(), 'J');
  }
  EXPECT_EQ(jsonAddRaw(nullptr, "ab", "1"), nullptr);
}

TEST(JsonWriter, doublesAStatusText) {
  tStatusRecord record = makeStatus();
  tStatusWriter writer = statusBegin(record);
  ASSERT_EQ(record.capacity, 512U);
  const std::string value(1200, 'v');
  char* cursor = jsonAddString(writer.cursor, "k", value.c_str(), writer.grow, writer.context);
  EXPECT_EQ(record.capacity, 2048U);
  jsonAddU32(cursor, "n", 1, writer.grow, writer.context);
  EXPECT_EQ(record.text, "{\"k\":\"" + value + "\",\"n\":1}");
  EXPECT_EQ(record.text[2047], 'J');
  statusReleaseText(record);
}

TEST(JsonScanner, acceptsJsonAndLaxNumbers) {
  const std::pair<bool, std::string> cases[] = {
      {true, R"({}| [ ] |{"a" : [1,-2.5e+3,true , false,null,"\u00e4\/\b"]}|[[[{}]]]|[{},[1]])"
             "|[-]|[1.]|[007]|[1e+]|[1E2,\t1e-\r]|[\"\\uFF00\xFF\x7F\"]\n"},
      {false,
       R"(|1|{|[|[1,]|{"a":1,}|{"a"}|{"a":}|{a:1}|[1 2]|[}|{]|[1ex]|[+1]|[.5]|[tru]|[]]|[] x)"
       R"(|{"a":1 "b":2}|{,}|[,]|["\x"]|["\x0000"]|["\u12g4"]|["\|["a|["\u00f"]|["\u00:0"])"
       "|[\"\\u00G0\"]|[\"\\u00`0\"]|[\"\n\"]"}};
  for (const auto& [isJson, texts] : cases) {
    for (const std::string& text : test::split(texts, "|")) {
      const char* const end = jsonFindEnd(text.c_str());
      EXPECT_EQ(end ? *end : ' ', isJson ? text[text.find_last_of("]}")] : ' ') << text;
    }
  }
}

TEST(JsonScanner, looksAtEveryByteOfAString) {
  // Strings are read in blocks: whatever stands where, and however little text is left behind.
  for (std::size_t length = 1; length < 40; ++length) {
    for (std::size_t place = 0; place < length; ++place) {
      for (const char byte : {'\x1F', '"', '\\'}) {
        std::string text = "[\"" + std::string(length, '\x80') + "\"]";
        EXPECT_NE(jsonFindEnd(text.c_str()), nullptr);
        text[2 + place] = byte;
        EXPECT_EQ(jsonFindEnd(text.c_str()), nullptr) << text;
        text.insert(2 + place, "\\");
        EXPECT_EQ(jsonFindEnd(text.c_str()) != nullptr, byte >= ' ') << text;
      }
    }
  }
}

TEST(JsonScanner, boundsItsDepth) {
  const auto nested = [](std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
  };
  EXPECT_NE(jsonFindEnd(nested(kJsonMaxDepth).c_str()), nullptr);
  EXPECT_EQ(jsonFindEnd(nested(kJsonMaxDepth + 1).c_str()), nullptr);
  EXPECT_EQ(jsonFindEnd(std::string(1000000, '[').c_str()), nullptr);
}

}  // namespace

}  // namespace varmex
