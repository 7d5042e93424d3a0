#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <span>

#include "corpxiTools/iniFile.h"
#include "tests/support/testMachine.h"
#include "tests/support/testPlace.h"
#include "tests/support/texts.h"

// What the compiler's own library knows of the processor.
extern "C" struct tProcessor { unsigned vendor, type, subtype, features; } __cpu_model;

namespace varmex {

namespace {

using namespace std::string_literals;

tContentDigest digestWithoutAvx2(std::string_view text) {
  const unsigned features = std::exchange(__cpu_model.features, 0U);
  const tContentDigest digest = tIniText(text).digest();
  __cpu_model.features = features;
  return digest;
}

class tIni : public testing::Test {
 protected:
  bool load(const std::string& text) {
    test::tTestMachine::write(path_, text);
    return file_.read(path_.string());
  }

  // What the reader makes of a file: sections and items with their lines, "[S]@1 K=v@2", and the
  // first line that says nothing, "!3".
  std::string content(const std::string& text) {
    EXPECT_TRUE(load(text));
    expectLookUps();
    std::string all;
    for (const tIniSection& section : sections()) {
      all += " [" + std::string(section.name) + "]@" + std::to_string(section.line);
      std::map<std::uint32_t, std::string> items;
      for (const tIniItem& item : itemsOf(section)) {
        items[item.line] = std::string(item.name) + '=' + item.value;
      }
      for (const auto& [line, item] : items) all += ' ' + item + '@' + std::to_string(line);
    }
    const int bad = file_.store().firstBadLine();
    if (bad >= 0) all += " !" + std::to_string(bad);
    return all.empty() ? all : all.substr(1);
  }

  // Whichever way and from wherever a name is looked for, it leads to the first that has it.
  void expectLookUps() {
    std::set<std::string_view> names;
    for (const tIniSection& section : sections()) {
      names.insert(section.nameView());
      for (const tIniItem& item : itemsOf(section)) names.insert(item.nameView());
    }
    for (const std::string_view name : names) {
      EXPECT_EQ(file_.findSection(name), first(sections(), name)) << name;
      const std::string_view words = name.substr(0, name.find_last_not_of("0123456789") + 1);
      const std::uint32_t number = readUnsignedBase0(name.substr(words.size()).data()).value;
      for (const tIniSection& other : sections()) {
        for (std::size_t head = 0; head <= words.size(); ++head) {
          const tNumberedName numbered(words.substr(0, head), words.substr(head), number);
          EXPECT_EQ(file_.findSectionBehind(&other, numbered), first(sections(), numbered.text()))
              << numbered.text() << " behind " << other.name;
        }
        const tIniItem* const item = first(itemsOf(other), name);
        EXPECT_EQ(file_.findItem(&other, name), item) << name;
        for (std::size_t from = 0; from <= other.count; ++from) {
          std::size_t place = from;
          EXPECT_EQ(file_.findItem(other, name, place), item) << name << from;
        }
      }
    }
  }

  template <class Entry>
  static const Entry* first(std::span<const Entry> entries, std::string_view name) {
    const auto found = std::ranges::find(entries, name, &Entry::nameView);
    return found == entries.end() ? nullptr : &*found;
  }
  std::span<const tIniSection> sections() const { return file_.store().sections(); }
  static std::span<const tIniItem> itemsOf(const tIniSection& section) {
    return {section.items, section.count};
  }

  // What a reading makes of texts between bars, "!" for a value that it refuses.
  template <class Value>
  std::string read(tResult<Value> (tIniFile::*get)(const tIniPlace&, tLiteral) const,
                   const char* texts,
                   const char* refusal = "The value in section S item K is invalid") {
    std::string answers;
    for (const std::string& text : test::split(texts, "|")) {
      load("[S]\nK=" + text + '\n');
      const tResult<Value> result = (file_.*get)(file_.placeOf(tShortName("S")), tLiteral("K"));
      EXPECT_TRUE(result || result.refusal().message() == refusal) << text;
      answers += (answers.empty() ? "" : "|") + (result ? testing::PrintToString(*result) : "!");
    }
    return answers;
  }

  tIniFile file_;
  const std::filesystem::path path_ = test::tTestPlace::folder() / "file.ini";
};

// Around the share in which a file goes into its digest, and the blocks of it.
TEST_F(tIni, readsATextThatIsOrIsNotAsExpected) {
  ASSERT_TRUE(tContentDigester::isReady());
  constexpr std::size_t kShare = 64 * 1024;  // to compare, four of them to read
  tIniText read;
  const auto expectRead = [&](const std::string& text, const tContentDigest* expected, bool is) {
    test::tTestMachine::write(path_, text);
    ASSERT_TRUE(readIniText(path_.string(), read, tLooked::no, expected));
    EXPECT_EQ(read.is(expected ? *expected : tContentDigest()), is) << text.size();
    EXPECT_EQ(read.bytes(), is ? "" : text) << text.size();
  };
  for (const std::size_t edge :
       {std::size_t{2}, std::size_t{128}, std::size_t{4096}, kShare, 4 * kShare}) {
    for (const std::size_t size : {edge - 1, edge, edge + 1, 2 * edge}) {
      std::string text(size, 'x');
      for (std::size_t n = 0; n < size; n += 7) text[n] = static_cast<char>('a' + n % 26);
      expectRead(text, nullptr, false);
      const tContentDigest digest = read.digest();
      EXPECT_EQ(digest, digestWithoutAvx2(text)) << size;
      EXPECT_NE(digest, tIniText(text + '\0').digest()) << size;
      for (std::size_t place = size; place-- > 0; place /= 2) {
        std::string other = text;
        other[place] = '-';
        expectRead(other, &digest, false);
      }
      expectRead(text, &digest, true);
    }
  }
}

TEST_F(tIni, classifiesLines) {
  const std::pair<std::string, const char*> cases[] = {
      {"K=0\n[S]\nK=1", "[S]@2 K=1@3"},
      {"[ S ] trailing\n \t K \t=\v 1 ; two \f\n", "[S]@1 K=1 ; two@2"},
      {"[S]\n ;K=1\n# K = 1\n", "[S]@1 # K=1@3"},
      {"[S]\n=value\nK==1\n", "[S]@1 K==1@3 !2"},
      {"[S]\nK =\n; fine\nwrong", "[S]@1 !2"},
      {"[S]\n; fine\n\nwrong", "[S]@1 !3"},
      {"[S]\nK=1\n[]\nK=2\n[  ]\nK=3\n[X\nK=4\n", "[S]@1 K=4@8 !3"},
      {"[S]]\nK=1\n[[T]\nK=2\n", "[S]@1 K=1@2 [[T]@3 K=2@4"},
      {"[S]\nk=1\nK=2\n[s]\nK=3", "[S]@1 k=1@2 K=2@3 [s]@4 K=3@5"},
      {"", ""},
      {"\xEF\xBB\xBF", ""},
      {"\xEF\xBB\xBF[S]\nK=1", "[S]@1 K=1@2"},
      {"\0\0\xFE"s, "!1"},
      // Quotes around the whole of a value.
      {"[S]\nK = \"a b\"\nL=\" a \"\nM=\"a\" b\nN='a'",
       "[S]@1 K=a b@2 L= a @3 M=\"a\" b@4 N='a'@5"},
      {"[S]\nK=\"\"\nL=\"\nM=\"\\\"\"", "[S]@1 K=@2 L=\"@3 M=\\\"@4"},
      // Ends of lines. One at the very start is not the remembered one and counts for nothing.
      {"[S]\r\nA=1\r\n\r\nK=2\r\n", "[S]@1 A=1@2 K=2@4 !3"},
      {"[S]\n\rA=1\n\r\n\rK=2", "[S]@1 A=1@2 K=2@4 !3"},
      {"[S]\r\rK=2\r", "[S]@1 K=2@3 !2"},
      {"[S]\nA=1\0K=2\0"s, "[S]@1 A=1@2 K=2@3"},
      {"\n[S]\nK=2", "[S]@1 K=2@2"},
      {"\r\n[S]\nK=2", "[S]@2 K=2@3 !1"},
      // Sections and items that stand twice merge where halving reaches the first: of Z, A, K the
      // search for Z looks at A and then goes on to the right.
      {"[S]\nK=1\nK=2\n", "[S]@1 K=2@3"},
      {"[S]\nA=1\n[T]\nB=1\n[S]\nK=2\nA=3\n", "[S]@5 K=2@6 A=3@7 [T]@3 B=1@4"},
      {"[S]\nZ=1\nA=1\nK=1\nZ=2\n", "[S]@1 Z=1@2 A=1@3 K=1@4 Z=2@5"},
      {"[S]\nK=1\n[A]\nX=1\n[B]\nX=1\n[S]\nK=2\n",
       "[S]@1 K=1@2 [A]@3 X=1@4 [B]@5 X=1@6 [S]@7 K=2@8"},
      {"[C1]\nK=3\n[B1]\nK=2\n[A1]\n[D1]\nK=4\n[C1]\nK=9\n[B1]\n",
       "[C1]@1 K=3@2 [B1]@3 K=2@4 [A1]@5 [D1]@6 K=4@7 [C1]@8 K=9@9 [B1]@10"},
      // The last search found the very section.
      {"[A]\nX=1\n[S]\nK=0\n[S]\nK=1\n[0]\nX=1\n[1]\n[2]\nX=1\n[S]\nK=2\n",
       "[A]@1 X=1@2 [S]@12 K=2@13 [0]@7 X=1@8 [1]@9 [2]@10 X=1@11"},
      // Names that begin alike.
      {"[A]\nB=1\nC=2\n[ABC]\n[AB]\nC=3\nB=4\n[B]\n[C]\n[AC]\nD=5",
       "[A]@1 B=1@2 C=2@3 [ABC]@4 [AB]@5 C=3@6 B=4@7 [B]@8 [C]@9 [AC]@10 D=5@11"},
      {"[A1]\n[A2]\n[A1B1]\n[A2B1]\n[A2B12]\n[A1B12]\n[C1B1]\n[C01]\n[C1]",
       "[A1]@1 [A2]@2 [A1B1]@3 [A2B1]@4 [A2B12]@5 [A1B12]@6 [C1B1]@7 [C01]@8 [C1]@9"},
      // Pieces.
      {"[S]\nK Line1=ab\nK Line2=\"c d\"\nX=1\n[T]\nX Line1=x",
       "[S]@1 K=abc d@2 X=1@4 [T]@5 X=x@6"},
      {"[S]\nK Line2=x\nK Line1=a\nK Line007=b\nO Line0=c\nL Line01=d\n",
       "[S]@1 K Line2=x@2 K=abc@3 L=d@6"},
      {"[S]\nK Line1x=a\nA Line Line1=b\nC Line1=c\nC Line2147483648=d\nD Line1=e\nD Line=f",
       "[S]@1 K Line1x=a@2 A Line Line1=b@3 C=c@4 C Line2147483648=d@5 D=e@6 D Line=f@7"},
      {"[S]\nK Line1=1\nK Line2=2\nK=3\n", "[S]@1 K=12@2 K=3@4"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(content(text), expected) << text;
  const std::string longName = std::string(70, 'x') + '1';
  EXPECT_EQ(content('[' + longName + "]\n[S]"), '[' + longName + "]@1 [S]@2");
}

TEST_F(tIni, readsLongLines) {
  for (const std::size_t length : {254U, 255U, 256U, 300U, 510U, 511U, 512U, 1023U, 5000U}) {
    const std::string item = "K=" + std::string(length - 2, 'v');
    const std::string expected = "[S]@1 " + item + "@2";
    EXPECT_EQ(content("[S]\n" + item + "\nZ=1"), expected + " Z=1@3");
    EXPECT_EQ(content("[S]\r\n" + item + "\r\nZ=1"), expected + " Z=1@3");
    const bool isLost = length == 255 || length == 511 || length == 1023;
    EXPECT_EQ(content("[S]\n" + item), isLost ? "[S]@1" : expected);
    // Where the first read of the line, or another, ends on its end, and that differs from the
    // remembered one, the next line goes on with it.
    EXPECT_EQ(content("[S]\r" + item + "\nmore\rZ=1"),
              isLost ? "[S]@1 " + item + "more@2 Z=1@3" : expected + " Z=1@4 !3");
    EXPECT_EQ(content("[S]\r" + item + '\n'), isLost ? "[S]@1" : expected) << "nothing follows";
  }
  EXPECT_EQ(content(std::string(255, 'x') + "\n[S]\nK=1"), "!1") << "of the first line";
  // A name may lie in the first read and its '=' in the next.
  EXPECT_EQ(content("[S]\nA=1\n" + std::string(300, ' ') + "K=2"), "[S]@1 A=1@2 K=2@3");
}

// Lines are searched in blocks of a fixed size: each '=' and each end falls on each place of one.
TEST_F(tIni, cutsLinesOfAllLengths) {
  std::string text = "[S]\n", expected = "[S]@1";
  for (std::size_t name = 1; name <= 140; ++name) {
    const std::string item =
        std::string(name, 'k') + '=' + std::string(name <= 70 ? name : 141 - name, '=');
    text += item + '\n';
    expected += ' ' + item + '@' + std::to_string(name + 1);
  }
  EXPECT_EQ(content(text), expected);
}

TEST_F(tIni, findsAllOfManySectionsAndOfLargeOnesThatAreTakenUpAgain) {
  const auto print = [](int number) { return std::to_string(number); };
  std::string text, first, second, others;
  for (int n = 100; n < 200; ++n) {
    const std::string item = print(n * 7 % 100) + '=' + print(n);
    const int line = (n - 100) * 5 + 1;
    text += "[A]\nx" + item + "\n[S]\nK" + item + "\n[T" + print(n) + "]\n";
    first += " x" + item + '@' + print(line + 1);
    second += " K" + item + '@' + print(line + 3);
    others += " [T" + print(n) + "]@" + print(line + 4);
  }
  EXPECT_EQ(content(text), "[A]@496" + first + " [S]@498" + second + others);
}

// More items than texts of that size mostly have.
TEST_F(tIni, keepsTheItemsOfShortLines) {
  std::string text, expected;
  for (int line = 1; line <= 300; ++line) {
    const std::string number = std::to_string(line);
    const std::string entry = line % 70 == 1 ? "[S" + number + "]" : "k" + number + "=v";
    text += entry + '\n';
    expected += ' ' + entry + '@' + number;
  }
  EXPECT_EQ(' ' + content(text), expected);
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
  EXPECT_EQ(read(&tIniFile::getNumberList, R"(1 , 2|1x,2|0x10|-1,+2|12abc|""|1,,3|1,2,|,1|x|" ")",
                 "The number list in section S item K is invalid."),
            "{ 1, 2 }|{ 1, 2 }|{ 0 }|{ 4294967295, 2 }|{ 12 }|{}|!|!|!|!|!");
  load("[S]\nK=\"  \"\n");
  const tIniPlace place = file_.placeOf(tShortName("S"));
  EXPECT_EQ(*file_.getString(place, "K"), "  ");
  EXPECT_EQ(file_.getString(place, "L").refusal().message(), "Section S item: L not found");
  EXPECT_EQ(file_.getNumber(place, "K").refusal().message(), "Section S item: K not found");
}

TEST_F(tIni, reportsFilesThatItCannotRead) {
  EXPECT_FALSE(file_.read((path_ / "missing").string()));
  for (const std::string& mark : {"\xFF\xFE"s, "\xFE\xFF"s, "\0\0\xFE\xFF"s, "\xFF\xFE\0\0"s}) {
    EXPECT_THROW(load(mark + "[S]\nK=1\n"), tIniException);
    EXPECT_FALSE(file_.hasSection("S"));
  }
  EXPECT_TRUE(load("[S]\nK=1\n"));
  EXPECT_FALSE(file_.read(path_.string() + "x")) << "and the old content is gone";
  EXPECT_FALSE(file_.hasSection("S"));
}

}  // namespace

}  // namespace varmex
