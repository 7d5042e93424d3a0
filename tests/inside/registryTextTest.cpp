#include <gtest/gtest.h>

#include <algorithm>

#include "corpxiTools/fileSystem/posix/registryNames.h"
#include "corpxiTools/fileSystem/posix/registryText.h"
#include "tests/support/texts.h"

namespace varmex {

namespace {

const std::string kHead = "Windows Registry Editor Version 5.00\r\n\r\n";
const std::string kHeader = "[HKEY_LOCAL_MACHINE\\A]\r\n";

// The tables write the machine's root as "~", quotes as apostrophes, the end of a line as "\n".
std::string written(const std::string& text) {
  std::string all;
  for (const char byte : text) {
    const bool isQuote = byte == '\'';
    all += byte == '~'    ? "HKEY_LOCAL_MACHINE"
           : byte == '\n' ? "\r\n"
                          : std::string(1, isQuote ? '"' : byte);
  }
  return all;
}

// What a text has of a key: its values, each as NAME(TYPE)DATA, and its subkeys in brackets; "no
// key" without it.
std::string keyOf(const std::string& text, const std::string& path = "HKEY_LOCAL_MACHINE\\A") {
  tFileBytes content{std::make_unique_for_overwrite<char[]>(text.size()), text.size()};
  text.copy(content.bytes.get(), text.size());
  const tRegistryText registry(std::move(content));
  const auto key = registry.findKey(path);
  if (!key) return "no key";
  EXPECT_TRUE(sameRegistryName(registry.headerOf(path).substr(0, path.size()), path));
  std::string all;
  for (const tRegistryTextValue& value : key->values()) {
    EXPECT_EQ(key->find(value.name), &value) << value.name;
    EXPECT_TRUE(value.type != 1 || value.data.ends_with('\0'));
    all += ' ' + std::string(value.name) + '(' + std::to_string(value.type) + ')';
    all += value.data.substr(0, value.data.size() - (value.type == 1 ? 1 : 0));
  }
  for (const std::string_view name : registry.subkeys(path)) {
    EXPECT_TRUE(registry.findKey(path + '\\' + std::string(name))) << name;
    all += " [" + std::string(name) + ']';
  }
  return all.empty() ? all : all.substr(1);
}

TEST(RegistryText, readsEntries) {
  using namespace std::string_literals;
  const struct {
    const char* lines;
    std::string values;
  } cases[] = {
      // Every type.
      {R"("n"="a\\b \"c\"")", R"(n(1)a\b "c")"},
      {R"(@="d")", "(1)d"},
      {R"("a\"b\\c"="")", R"(a"b\c(1))"},
      {"'n'=dword:000000fF", "n(4)\xFF\0\0\0"s},
      {"'n'=DWORD:8000000f", "n(4)\x0F\0\0\x80"s},
      {"'n'=dword:1", "n(4)\1\0\0\0"s},
      {"'n'=hex:0a,FF,", "n(3)\x0A\xFF"},
      {"'n'=hex:", "n(3)"},
      {"'n'=hex(2):25,00,e4,00,00,00", "n(2)%\xC3\xA4\0"s},
      {"'n'=hex(7):61,00,00,00,3d,d8,00,de,00,00,00,00", "n(7)a\0\xF0\x9F\x98\x80\0\0"s},
      {"'n'=hex(1):AC,20,ac,20,0,0", "n(1)\xE2\x82\xAC\xE2\x82\xAC"},
      // The ends of the ranges of UTF-16, and halves without their other.
      {"'n'=hex(2):7f,00,80,00,ff,07,00,08,00,e0,ff,ff",
       "n(2)\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEE\x80\x80\xEF\xBF\xBF"},
      {"'n'=hex(2):00,d8,00,dc,ff,db,ff,df", "n(2)\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
      {"'n'=hex(2):00,d8,ff,db,00", "n(2)\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"'n'=hex(2):00,d8,41,00,00,dc,00,dc,00,d8",
       "n(2)\xEF\xBF\xBD"
       "A\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"'n'='two\nlines'", "n(1)two\r\nlines"},
      {"  'n' = 'x' ", "n(1)x"},
      // Values on several lines.
      {"'n'=hex(b):01,\\\n  02,03,\\\n  04", "n(11)\1\2\3\4"},
      {"'n'=hex:01,\\\n\n \n  02", "n(3)\1\2"},
      {"'n'=hex:01,\\\n ; 09,\n;x\\\n  02,\\\n  03", "n(3)\1\2\3"},
      {"'n'=hex:01,\\ ; one\n  02, \\;two\n  03 ; three \\\n'm'='1'", "n(3)\1\2\3 m(1)1"},
      // Comments.
      {"'n'='x;y' ; why", "n(1)x;y"},
      {"'n'='x';", "n(1)x"},
      {"'n'=dword:0000000f;why", "n(4)\x0F\0\0\0"s},
      {"; 'n'='x'", ""},
      // One name.
      {"'Name'='1'\n'x'='2'\n'nAME'=dword:3", "Name(4)\3\0\0\0 x(1)2"s},
      {"'n'='1'\n'x'='2'\n'N'=-", "x(1)2"},
      {"'n'='1'\n'N'=- ; gone\n'x'='2'\n'N'='3'", "x(1)2 N(1)3"},
      {"'n'=-\n@='1'\n@=-\n'N'='1'\n'n'=-x", "N(1)1"},
      {"'n'=-x\n'b'='2'\n'a'='1'", "b(1)2 a(1)1"},
  };
  for (const auto& [lines, values] : cases) {
    EXPECT_EQ(keyOf(kHead + kHeader + written(lines)), values) << lines;
    EXPECT_EQ(keyOf(kHead + kHeader + written(lines) + "\r\n"), values) << lines;
  }
}

TEST(RegistryText, passesOverWhatItCannotRead) {
  const std::string lines =
      "'n'|n='x'|'n'=x|'n'=|'n'='x'y|'n'='x\\'|'n='x|'n'='open|'n'=dword:12345678a|'n'=dword:|"
      "'n'=dword: ;1|'n'=dword:g|'n'=dword|'n'=hex|'n'=hex:1g|'n'=hex:001|'n'=hex:1,,2|"
      "'n'=hex(7:00|'n'=hex():00|'n'=hex(123456789):00|'n'=hex:01,\\|'n'=hex:01,\\\n|"
      "'n'=hex:01,\\\n;02|'n'=hex:01,\\\n  zz,";
  for (const std::string& line : test::split(lines, "|")) {
    const std::string text = written(line);
    EXPECT_EQ(keyOf(kHead + kHeader + text), "") << line;
    EXPECT_EQ(keyOf(kHead + kHeader + text + "\r\n\"z\"=\"1\""), "z(1)1") << line;
    EXPECT_EQ(keyOf(kHead + written("[~\\B]\n") + text + "\r\n" + kHeader), "") << line;
  }
  // What stands in a text is no line.
  EXPECT_EQ(keyOf(kHead + written("[~\\B]\n\"t\"=\"\n[~\\A]\n@=dword:5\n\"\n[~\\A]\n")), "");
}

TEST(RegistryText, readsHeaders) {
  const std::pair<const char*, const char*> cases[] = {
      {"[hkey_local_machine\\a]\n@='1'", "(1)1"},
      {" [~\\A] \n@='1'", "(1)1"},
      {"[~\\A] ; [x]\n@='1'", "(1)1"},
      {"[~\\A\\b]c];\n", "[b]c]"},
      {"[~\\A\\]\n@='1'", "(1)1"},
      {"[~\\A\\\\\\B\\\\]\n@='1'", "[B]"},
      {"[~\\\\A]\n@='1'", "no key"},
      {"[~\\A\n@='1'", "no key"},
      {"[\\A]\n[]\n[-]\n[-~]\n@='1'", "no key"},
      // One key begins as the other does.
      {"[~\\AB]\n@='1'\n[~\\A0\\C]", "no key"},
      {"[~\\AB]\n[~\\A\\C]\n[~\\A B]", "[C]"},
      // Repeated keys, and those below in the order of the text.
      {"[~\\A]\n@='1'\n[~\\a\\D\\x]\n[~\\A\\c]\n[~\\A]\n'x'='2'\n@='3'\n[~\\A\\d]",
       "(1)3 x(1)2 [D] [c]"},
      // Deletions.
      {"[~\\A]\n@='1'\n[-~\\a] ; gone\n'x'='1'", "no key"},
      {"[~\\A]\n@='1'\n[-~\\A]\n[~\\A]\n'x'='2'", "x(1)2"},
      {"[~\\A]\n[-~\\A]\n[~\\A]\n'x'='2'\n[-~\\A]", "no key"},
      {"[~\\A\\b]\n[~\\A\\c]\n[~\\A\\B]", "[b] [c]"},
      {"[~\\A\\B]\n[~\\A\\B\\C]\n[~\\A\\BC]\n[-~\\A\\B\\]\n", "[BC]"},
      {"[~\\A\\B\\C]\n'x'='1'\n[-~\\A\\B]\n[~\\A\\D]\n[-~\\A\\D\\E]", "[D]"},
      {"[~\\A\\B\\C]\n[-~\\A\\B\\C]\n[-~\\A]\n", "no key"},
      {"[~\\A\\B]\n[-~\\A\\B]\n[~\\A\\B\\C]\n[-~\\A]", "no key"},
      {"[~\\A]\n@='1'\n[-~]\n", "(1)1"},
      {"[-~\\A]\n[~\\A\\B\\C]\n[-~\\A\\B\\C]", "[B]"},
  };
  for (const auto& [lines, key] : cases) EXPECT_EQ(keyOf(kHead + written(lines)), key) << lines;
}

TEST(RegistryText, isAnExportOfVersion5) {
  const std::string text = kHead + kHeader + "\"\xC3\xA4\"=\"\xE2\x82\xAC\"\r\n";
  const std::string values = "\xC3\xA4(1)\xE2\x82\xAC";
  EXPECT_EQ(keyOf(text), values);
  EXPECT_EQ(keyOf("\xEF\xBB\xBF" + text), values);
  std::string wide = "\xFF\xFE";
  for (const char16_t unit :
       u"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\A]\r\n"
       u"\"\u00E4\"=\"\u20AC\"\r\n") {
    if (unit) wide += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
  }
  EXPECT_EQ(keyOf(wide), values);
  EXPECT_EQ(keyOf(""), "no key");
  EXPECT_EQ(keyOf("REGEDIT4\r\n" + kHeader), "no key");
}

// Whoever writes a text does not choose how long it takes to read.
TEST(RegistryText, takesAnyTextInItsStride) {
  std::string nested = kHead;
  std::string path = "HKEY_LOCAL_MACHINE";
  for (int depth = 0; depth < 2000; ++depth)
    nested += "[" + (path += "\\a") + "]\n[-" + path + "]\n";
  EXPECT_EQ(keyOf(nested, "HKEY_LOCAL_MACHINE"), "[a]");
  std::string names = kHead + kHeader;
  std::string deletions = kHead;
  for (int n = 0; n < 200'000; ++n) {
    names += '"' + std::to_string(n) + "\"=\"\"\n";
    deletions += "[HKEY_USERS\\" + std::to_string(n) + "]\n[-HKEY_USERS\\A]\n";
  }
  EXPECT_EQ(std::ranges::count(keyOf(names), '('), 200'000);
  EXPECT_EQ(std::ranges::count(keyOf(deletions, "HKEY_USERS"), '['), 200'000);
}

}  // namespace

}  // namespace varmex
