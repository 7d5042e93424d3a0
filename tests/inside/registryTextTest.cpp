#include <gtest/gtest.h>

#include "corpxiTools/fileSystem/posix/registryText.h"
#include "corpxiTools/fileSystem/registryKey.h"
#include "tests/support/testMachine.h"

namespace varmex {

namespace {

const std::string kHead = "Windows Registry Editor Version 5.00\r\n\r\n";

tRegistryTextKey read(const std::string& text, const char* path = "HKEY_LOCAL_MACHINE\\A") {
  tRegistryTextKey key;
  EXPECT_TRUE(readRegistryText(text, path, key)) << text;
  return key;
}

// The one value that this line gives.
tRegistryTextValue valueOf(const std::string& line) {
  tRegistryTextKey key = read(kHead + "[HKEY_LOCAL_MACHINE\\A]\r\n" + line + "\r\n");
  EXPECT_EQ(key.values.size(), 1U) << line;
  return key.values.empty() ? tRegistryTextValue{} : key.values[0];
}

std::string wide(const std::string& text) {
  std::string units = "\xFF\xFE";
  for (const char byte : text) units += {byte, '\0'};
  return units;
}

TEST(RegistryText, readsValuesOfEveryType) {
  using namespace std::string_literals;
  const struct {
    const char* line;
    const char* name;
    std::uint32_t type;
    std::string data;
  } cases[] = {
      {R"("n"="a\\b \"c\"")", "n", 1, "a\\b \"c\"\0"s},
      {R"(@="d")", "", 1, "d\0"s},
      {R"("a\"b\\c"="")", "a\"b\\c", 1, "\0"s},
      {"\"n\"=dword:000000fF", "n", 4, "\xFF\0\0\0"s},
      {"\"n\"=hex:0a,FF,", "n", 3, "\x0A\xFF"},
      {"\"n\"=hex:", "n", 3, ""},
      {"\"n\"=hex(2):25,00,e4,00,00,00", "n", 2, "%\xC3\xA4\0"s},
      {"\"n\"=hex(7):61,00,00,00,3d,d8,00,de,00,00,00,00", "n", 7, "a\0\xF0\x9F\x98\x80\0\0"s},
      {"\"n\"=hex(b):01,\\\r\n  02,03,\\\r\n  04", "n", 11, "\1\2\3\4"},
      {"\"n\"=\"two\r\nlines\"", "n", 1, "two\r\nlines\0"s},
      {"  \"n\" = \"x\" ", "n", 1, "x\0"s},
  };
  for (const auto& [line, name, type, data] : cases) {
    const tRegistryTextValue value = valueOf(line);
    EXPECT_EQ(value.name, name) << line;
    EXPECT_EQ(value.type, type) << line;
    EXPECT_EQ(value.data, data) << line;
  }
}

TEST(RegistryText, passesOverWhatItCannotRead) {
  for (const char* line :
       {"\"n\"", "n=\"x\"", "\"n\"=x", "\"n\"=dword:12345678a", "\"n\"=hex:1g", "\"n\"=hex(7:00",
        "\"n\"=\"x\"y", "\"n=\"x", "; \"n\"=\"x\"", "\"n\"=-", "\"n\"=\"open"}) {
    const auto key = read(kHead + "[HKEY_LOCAL_MACHINE\\A]\r\n" + line + "\r\n\"z\"=\"1\"\r\n");
    ASSERT_EQ(key.values.size(), 1U) << line;
    EXPECT_EQ(key.values[0].name, "z") << line;
  }
}

// What breaks off costs itself alone, and what stands in a text is no line.
TEST(RegistryText, keepsEntriesApart) {
  const std::string others = "[HKEY_LOCAL_MACHINE\\B]\r\n\"x\"=\"1\"\r\n";
  for (const char* next : {"", "\"m\"=\"2\"\r\n", "  zz,\r\n"}) {
    const auto key = read(kHead + "[HKEY_LOCAL_MACHINE\\A]\r\n\"n\"=hex:01,\\\r\n" + next + others);
    EXPECT_EQ(key.values.size(), *next == '"' ? 1U : 0U) << next;
  }
  const auto text =
      read(kHead + "[HKEY_LOCAL_MACHINE\\B]\r\n\"t\"=\"\r\n[HKEY_LOCAL_MACHINE\\A]\r\n" +
           "@=dword:5\r\n\"\r\n[HKEY_LOCAL_MACHINE\\A]\r\n");
  EXPECT_TRUE(text.values.empty());
}

TEST(RegistryText, findsKeysWithoutRegardToCase) {
  const std::string text = kHead +
                           "[hkey_local_machine\\a]\r\n\"N\"=\"1\"\r\n\"n\"=\"2\"\r\n"
                           "[HKEY_LOCAL_MACHINE\\A\\B\\C]\r\n[HKEY_LOCAL_MACHINE\\AB]\r\n"
                           "[HKEY_LOCAL_MACHINE\\A\\b]\r\n[HKEY_LOCAL_MACHINE\\A\\D]\r\n"
                           "[-HKEY_LOCAL_MACHINE\\A]\r\n\"m\"=\"3\"\r\n"
                           "[HKEY_LOCAL_MACHINE\\A\r\n\"o\"=\"3\"\r\n";
  const tRegistryTextKey key = read(text);
  ASSERT_EQ(key.values.size(), 1U);
  EXPECT_EQ(key.values[0].data, std::string("2\0", 2));
  EXPECT_EQ(key.subkeys, (std::vector<std::string>{"B", "D"}));
  EXPECT_EQ(read(text, "HKEY_LOCAL_MACHINE\\A\\B").subkeys, std::vector<std::string>{"C"});
  EXPECT_EQ(read(wide(text)).subkeys, key.subkeys);
  EXPECT_EQ(read("\xEF\xBB\xBF" + text).subkeys, key.subkeys);
  tRegistryTextKey missing;
  EXPECT_FALSE(readRegistryText(text, "HKEY_LOCAL_MACHINE\\X", missing));
  EXPECT_FALSE(
      readRegistryText("REGEDIT4\r\n[HKEY_LOCAL_MACHINE\\A]", "HKEY_LOCAL_MACHINE\\A", missing));
  EXPECT_FALSE(readRegistryText("", "HKEY_LOCAL_MACHINE\\A", missing));
}

TEST(RegistryKey, anUnreadableFileHasNoKeys) {
  test::tTestMachine machine;
  std::filesystem::create_directories(machine.folder() / "registry.reg");
  tRegistryKey key;
  EXPECT_NE(key.open(tRegistryRoot::localMachine, "SOFTWARE", tRegistryView::process), 0U);
  EXPECT_EQ(key.open(tRegistryRoot::localMachine, "", tRegistryView::process), 0U);
}

TEST(RegistryKey, hasTwoViews) {
  test::tTestMachine machine;
  machine.setRegistryNumber("SOFTWARE\\X", "n", 64);
  machine.setRegistryNumber("SOFTWARE\\WOW6432Node\\X", "n", 32);
  const auto number = [](const char* subkey, tRegistryView view) {
    tRegistryKey key;
    if (key.open(tRegistryRoot::localMachine, subkey, view) != 0) return 0U;
    std::uint32_t type = 0;
    std::uint32_t value = 0;
    std::uint32_t size = sizeof value;
    return key.queryValue("N", type, &value, size) == 0 ? value : 1U;
  };
  EXPECT_EQ(number("SOFTWARE\\X", tRegistryView::process), 64U);
  EXPECT_EQ(number("software\\x", tRegistryView::bits64), 64U);
  EXPECT_EQ(number("SOFTWARE\\X", tRegistryView::bits32), 32U);
  EXPECT_EQ(number("Software\\Wow6432Node\\X", tRegistryView::bits32), 32U);
  EXPECT_EQ(number("SOFTWARE\\Y", tRegistryView::bits32), 0U);
}

}  // namespace

}  // namespace varmex
