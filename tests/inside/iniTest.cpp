#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "corpxiTools/iniFile.h"
#include "tests/support/texts.h"

namespace varmex {

namespace {

class tIni : public testing::Test {
 protected:
  void TearDown() override { std::filesystem::remove(path_); }

  void write(const std::string& text) const {
    std::ofstream(path_, std::ios::binary | std::ios::trunc) << text;
  }
  bool load(const std::string& text) {
    write(text);
    return file_.read(path_.string());
  }
  // The value of item K in section S of a file.
  std::string value(const std::string& text, const char* item = "K") {
    EXPECT_TRUE(load(text));
    const char* const found = textOf("S", item);
    return found ? found : "<none>";
  }
  const char* textOf(std::string_view section, std::string_view item) {
    return file_.findValueText(file_.findSection(section), item);
  }
  bool has(std::string_view item) { return file_.hasItem(file_.findSection("S"), item); }
  std::uint32_t lineOf(const char* item) {
    const tIniItem* found = file_.store().findItem("S", item);
    return found ? found->line : 0;
  }
  // What a reading makes of texts between bars: numbers, "!" for a value that it refuses.
  template <class Value>
  std::string read(tResult<Value> (tIniFile::*get)(const tIniPlace&, tLiteral) const,
                   const char* texts) {
    std::string answers;
    for (const std::string& text : test::split(texts, "|")) {
      load("[S]\nK=" + text + '\n');
      const tResult<Value> result = (file_.*get)(file_.placeOf(tShortName("S")), tLiteral("K"));
      if (!result) {
        const bool isList = std::is_same_v<Value, tNumbers>;
        EXPECT_EQ(result.refusal().message(),
                  isList ? "The number list in section S item K is invalid."
                         : "The value in section S item K is invalid");
      }
      answers += (answers.empty() ? "" : "|") + (result ? print(*result) : "!");
    }
    return answers;
  }
  static std::string print(std::int64_t number) { return std::to_string(number); }
  static std::string print(const tNumbers& numbers) {
    std::string list;
    for (const std::uint32_t number : numbers) list += std::to_string(number) + ' ';
    return list;
  }

  tIniFile file_;
  std::filesystem::path path_ = std::filesystem::temp_directory_path() /
                                ("varmex-ini-" + std::to_string(std::random_device()()) + ".ini");
};

// Around the share in which a file goes into its digest, and the blocks of it.
TEST_F(tIni, readsATextThatIsOrIsNotAsExpected) {
  ASSERT_TRUE(tContentDigester::isReady());
  constexpr std::size_t kShare = 64 * 1024;  // to compare, four of them to read
  std::vector<std::size_t> sizes = {1, 150'000};
  for (const std::size_t edge : {std::size_t{128}, std::size_t{4096}, kShare, 4 * kShare}) {
    sizes.insert(sizes.end(), {edge - 1, edge, edge + 1, 2 * edge});
  }
  tIniText read;
  for (const std::size_t size : sizes) {
    const auto expectRead = [&](const std::string& text, const tContentDigest* expected, bool is) {
      write(text);
      ASSERT_TRUE(readIniText(path_.string(), read, tLooked::no, expected));
      EXPECT_EQ(expected && read.is(*expected), is) << size;
      EXPECT_EQ(read.bytes(), is ? "" : text) << size;
    };
    std::string text(size, 'x');
    for (std::size_t n = 0; n < size; n += 7) text[n] = static_cast<char>('a' + n % 26);
    expectRead(text, nullptr, false);
    const tContentDigest digest = read.digest();
    EXPECT_EQ(digest, tIniText(text).digest()) << size;
    expectRead(text, &digest, true);
    const std::size_t places[] = {0, 63, 64, 4096, kShare - 1, kShare, size - 1};
    for (const std::size_t place : places) {
      if (place >= size) continue;
      std::string other = text;
      other[place] = static_cast<char>(other[place] ^ 1);
      expectRead(other, &digest, false);
    }
  }
}

// Whatever stands ahead of it, a name leads to the first section that has it, and wherever it is
// looked for, to the first item.
TEST_F(tIni, findsSectionsBehindOthers) {
  for (const char* text : {"[A]\nK=1\n[B]\nK=2\n[C]\nK=3\n[D]\nK=4\n",
                           "[C]\nK=3\n[B]\nK=2\n[A]\nK=1\n[D]\nK=4\n[C]\nK=9\n[B]\nK=9\n",
                           "[A]\nK=1\nL=2\n[AB]\nL=1\nK=2\n[AC]\nM=1\nK=2\nL=3\nM=4\n[B]\n"
                           "K Line1=1\nK Line2=2\nK=3\n"}) {
    ASSERT_TRUE(load(text));
    const auto& sections = file_.store().sections();
    std::string joined;
    for (const tIniSection& section : sections) {
      for (const char* tail : {"", "B", "C"}) {
        EXPECT_EQ(file_.findSectionBelow(section, tail, joined),
                  file_.findSection(std::string(section.name) + tail))
            << text << section.name << tail;
      }
      for (const char* item : {"K", "L", "M"}) {
        for (std::size_t from = 0; from < 5; ++from) {
          std::size_t place = from;
          EXPECT_EQ(file_.findItem(section, item, place), file_.findItem(&section, item))
              << text << section.name << item << from;
        }
      }
    }
    for (const char* name : {"A", "B", "C", "D", "E"}) {
      const tIniSection* const expected = file_.findSection(name);
      EXPECT_EQ(file_.findSectionBehind(nullptr, name), expected);
      for (const tIniSection& earlier : sections) {
        EXPECT_EQ(file_.findSectionBehind(&earlier, name), expected) << text << name;
      }
    }
  }
}

TEST_F(tIni, classifiesLines) {
  using namespace std::string_literals;
  const struct {
    std::string text;
    const char* value;
    std::uint32_t line = 0;  // of the value, where that is of interest
  } cases[] = {
      {"K=0\n[S]\nK=1", "1"},
      {"[ S ] trailing\n \t K \t=\v 1 ; two \f\n", "1 ; two"},
      {"[S]\n ;K=1\n# K = 1\n", "<none>"},
      {"[S]\n=value\nK==1\n", "=1"},
      {"[S]\nK =\n", "<none>"},
      {"[S]\nK=1\n[]\nK=2\n[  ]\nK=3\n[X\nK=4\n", "4"},
      {"[S]]\nK=1\n[[T]\nK=2\n", "1"},
      {"[S]\nk=1\n", "<none>"},
      {"", "<none>"},
      {"\xEF\xBB\xBF", "<none>"},
      {"\xEF\xBB\xBF[S]\nK=1", "1"},
      // Quotes around the whole of a value.
      {"[S]\nK = \"a b\"\n", "a b"},
      {"[S]\nK = \" a \"\n", " a "},
      {"[S]\nK = \"a\" b\n", "\"a\" b"},
      {"[S]\nK = 'a'\n", "'a'"},
      {"[S]\nK = \"\"\n", ""},
      {"[S]\nK = \"\n", "\""},
      {"[S]\nK = \"\\\"\"\n", "\\\""},
      // Ends of lines. One at the very start is not the remembered one and counts for nothing.
      {"[S]\r\nA=1\r\n\r\nK=2\r\n", "2", 4},
      {"[S]\n\rA=1\n\r\n\rK=2", "2", 4},
      {"[S]\r\rK=2\r", "2", 3},
      {"[S]\nA=1\0K=2\0"s, "2", 3},
      {"\n[S]\nK=2", "2", 2},
      {"\r\n[S]\nK=2", "2", 3},
      // Sections and items that stand twice.
      {"[S]\nK=1\nK=2\n", "2", 3},
      {"[S]\nA=1\n[T]\nB=1\n[S]\nK=2\nA=3\n", "2", 6},
      {"[S]\nK=1\n[A]\nX=1\n[B]\nX=1\n[S]\nK=2\n", "1", 2},
      // The last search found the very section.
      {"[A]\nX=1\n[S]\nK=0\n[S]\nK=1\n[0]\nX=1\n[1]\nX=1\n[2]\nX=1\n[S]\nK=2\n", "2", 14},
      // Pieces.
      {"[S]\nK Line1=ab\nK Line2=\"c d\"\nX=1\n", "abc d"},
      {"[S]\nK Line1=ab\n", "ab"},
  };
  for (const auto& [text, expected, line] : cases) {
    EXPECT_EQ(value(text), expected) << text;
    EXPECT_TRUE(line == 0 || lineOf("K") == line) << text << lineOf("K");
  }
  load("[S]\n# K = 1\n[[T]\nK=2\n");
  EXPECT_TRUE(has("# K"));
  EXPECT_TRUE(file_.hasItem(file_.findSection("[T"), "K"));
  load("[S]\n; fine\nwrong\n\nK=");
  EXPECT_EQ(file_.store().firstBadLine(), 3);
}

// "K=" and a value, `length` bytes together.
std::string itemLine(std::size_t length) { return "K=" + std::string(length - 2, 'v'); }

TEST_F(tIni, readsLongLines) {
  for (const std::size_t length : {254U, 255U, 256U, 300U, 510U, 511U, 512U, 1023U, 5000U}) {
    const std::string expected(length - 2, 'v');
    EXPECT_EQ(value("[S]\n" + itemLine(length) + "\nZ=1"), expected) << length;
    EXPECT_TRUE(has("Z")) << length;
    EXPECT_EQ(value("[S]\r\n" + itemLine(length) + "\r\nZ=1"), expected) << length;
    EXPECT_TRUE(has("Z")) << length;
    const bool isLost = length == 255 || length == 511 || length == 1023;
    EXPECT_EQ(value("[S]\n" + itemLine(length)), isLost ? "<none>" : expected) << length;
  }
}

// Lines are searched in blocks of a fixed size: each '=' and each end falls on each place of one.
TEST_F(tIni, cutsLinesOfAllLengths) {
  std::string text = "[S]\n";
  for (std::size_t name = 1; name <= 70; ++name) {
    for (const std::size_t value : {name, 71 - name}) {
      text += std::string(name, value == name ? 'k' : 'K') + "=" + std::string(value, '=') + "\n";
    }
  }
  ASSERT_TRUE(load(text));
  for (std::size_t name = 1; name <= 70; ++name) {
    EXPECT_EQ(textOf("S", std::string(name, 'k')), std::string(name, '='));
    EXPECT_EQ(textOf("S", std::string(name, 'K')), std::string(71 - name, '='));
  }
}

TEST_F(tIni, joinsALineWhoseEndIsForeign) {
  // The first read of the long line ends on its end, and that differs from the remembered one.
  EXPECT_EQ(value("[S]\r" + itemLine(255) + "\nmore\r"), std::string(253, 'v') + "more");
  EXPECT_EQ(value("[S]\r" + itemLine(511) + "\nmore\rZ=1"), std::string(509, 'v') + "more");
  EXPECT_TRUE(has("Z"));
  EXPECT_EQ(value("[S]\r" + itemLine(254) + "\nmore\r"), std::string(252, 'v'));
  EXPECT_EQ(value(std::string(255, 'x') + "\n[S]\nK=1"), "<none>") << "of the first line";
  EXPECT_EQ(value("[S]\r" + itemLine(255) + "\n"), "<none>") << "nothing follows";
  // A name may lie in the first read and its '=' in the next.
  EXPECT_EQ(value("[S]\nA=1\n" + std::string(300, ' ') + "K=2"), "2");
}

TEST_F(tIni, mergesWhatHalvingReaches) {
  load("[S]\nA=1\n[T]\nB=1\n[S]\nK=2\nA=3\n");
  EXPECT_STREQ(textOf("S", "A"), "3");
  EXPECT_EQ(file_.store().sections().size(), 2U);
  EXPECT_EQ(file_.store().findSection("S")->line, 5U);
  // Of Z, A, K the search for Z looks at A and then goes on to the right, where Z is not.
  EXPECT_EQ(value("[S]\nZ=1\nA=1\nK=1\nZ=2\n", "Z"), "1");
  EXPECT_EQ(file_.store().findSection("S")->count, 4U);
}

TEST_F(tIni, joinsPieces) {
  EXPECT_EQ(value("[S]\nK Line2=x\nK Line1=a\nK Line007=b\nOther Line0=c\nK2 Line01=d\n"), "abc");
  EXPECT_TRUE(has("K Line2"));
  EXPECT_STREQ(textOf("S", "K2"), "d");
  load("[S]\nK Line1x=a\nA Line Line1=b\nB Line=c\nC Line1=d\nC Line2147483648=e\n");
  EXPECT_STREQ(textOf("S", "C"), "d");
  for (const char* name : {"K Line1x", "A Line Line1", "B Line", "C Line2147483648"}) {
    EXPECT_TRUE(has(name)) << name;
  }
}

TEST_F(tIni, findsAllOfLargeSectionsThatAreTakenUpAgain) {
  std::string text;
  for (int n = 0; n < 200; ++n) {
    const std::string number = std::to_string(n * 7 % 200);
    text += "[A]\nx" + number + "=1\n[S]\nK" + number + "=" + std::to_string(n) + "\n";
  }
  ASSERT_TRUE(load(text));
  EXPECT_EQ(file_.store().findSection("S")->count, 200U);
  for (int n = 0; n < 200; ++n) {
    const std::string number = std::to_string(n * 7 % 200);
    EXPECT_EQ(textOf("S", "K" + number), std::to_string(n));
    EXPECT_TRUE(file_.hasItem(file_.findSection("A"), "x" + number)) << n;
  }
  EXPECT_FALSE(has("K200") || has("A"));
}

TEST_F(tIni, numbers) {
  EXPECT_EQ(read(&tIniFile::getNumber,
                 "12| +7 |-0|\" 5\t\"|2147483647|-2147483648|000000000000012|12abc|0x10|+ 5|+|1 2|"
                 "--1|2147483648|-2147483649|99999999999999999999"),
            "12|7|0|5|2147483647|-2147483648|12|!|!|!|!|!|!|!|!|!");
  EXPECT_EQ(read(&tIniFile::getUnsigned,
                 R"(0x1F|0Xaf9|017|-1|4294967295|" +9"|-4294967295|""|0x|09|1x|"1 "|4294967296|x|)"
                 "0xg|0x1G|0x/"),
            "31|2809|15|4294967295|4294967295|9|1|!|!|!|!|!|!|!|!|!|!");
  EXPECT_EQ(read(&tIniFile::getNumberList, R"(1 , 2|1x,2|0x10|-1,+2|12abc|""|1,,3|1,2,|,1|x|" ")"),
            "1 2 |1 2 |0 |4294967295 2 |12 ||!|!|!|!|!");
  load("[S]\nK=\"  \"\n");
  EXPECT_EQ(*file_.getString(file_.placeOf(tShortName("S")), "K"), "  ");
  EXPECT_EQ(file_.getString(file_.placeOf(tShortName("S")), "L").refusal().message(),
            "Section S item: L not found");
  EXPECT_EQ(file_.getNumber(file_.placeOf(tShortName("S")), "K").refusal().message(),
            "Section S item: K not found");
}

// Names that differ in the upper bits of certain bytes alone, which weak hashes make nothing of.
TEST_F(tIni, findsSectionsWhateverTheirNames) {
  std::vector<std::string> names;
  std::string text;
  for (unsigned bits = 0; bits < 4096; ++bits) {
    std::string& name = names.emplace_back(12 * 16, 'a');
    for (unsigned group = 0; group < 12; ++group) {
      for (const unsigned byte : {7U, 11U, 15U}) {
        if (bits >> group & 1) name[16 * group + byte] = '\xE1';
      }
    }
    text += '[' + name + "]\nK=" + std::to_string(bits) + '\n';
  }
  load(text);
  for (std::size_t n = 0; n < names.size(); ++n) {
    ASSERT_EQ(textOf(names[n], "K"), std::to_string(n));
  }
}

TEST_F(tIni, reportsFilesThatItCannotRead) {
  EXPECT_FALSE(file_.read((path_ / "missing").string()));
  for (const std::string& mark : {std::string("\xFF\xFE"), std::string("\xFE\xFF"),
                                  std::string("\0\0\xFE\xFF", 4), std::string("\xFF\xFE\0\0", 4)}) {
    EXPECT_THROW(load(mark + "[S]\nK=1\n"), tIniException);
    EXPECT_FALSE(file_.hasSection("S"));
  }
  EXPECT_TRUE(load(std::string("\0\0\xFE", 3)));
  EXPECT_TRUE(load("[S]\nK=1\n"));
  EXPECT_FALSE(file_.read(path_.string() + "x")) << "and the old content is gone";
  EXPECT_FALSE(file_.hasSection("S"));
}

}  // namespace

}  // namespace varmex
