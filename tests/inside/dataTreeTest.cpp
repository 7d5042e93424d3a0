#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "sevrin/iDataTreeManager.h"
#include "tests/support/status.h"
#include "tests/support/testMachine.h"

namespace varmex {

namespace {

using namespace std::string_literals;
using tNames = std::vector<std::string>;

constexpr const char* kKey = "SOFTWARE\\VarmexTest";
constexpr const char* kUri = "reg://HKEY_LOCAL_MACHINE\\SOFTWARE\\VarmexTest";

class tDataTree : public testing::Test {
 protected:
  tDataTreeManagerPtr open(const std::string& uri) { return iDataTreeManager::open(uri, *status_); }
  void expectFailure(std::int32_t code, const std::string& constant, const std::string& debug) {
    EXPECT_EQ(test::takeFailure(status_),
              test::failure(code, constant, R"({"sevrin_debug":)" + debug + "}"));
  }
  // A value of the test's key as the type of the attribute, its text and its number.
  std::string readValue(std::uint32_t type, const std::string& bytes) {
    machine_.setRegistryValue(kKey, "v", type, bytes);
    const tDataTreeAttribute attribute = open(kUri)->getAttribute("v", *status_);
    return std::to_string(attribute.valueType) + '|' + attribute.text + '|' +
           std::to_string(attribute.number);
  }
  // The text "v" of the node below one that such a way leads to.
  std::string textBelow(const tDataTreeManagerPtr& node, const std::string& name) {
    return node->getChild(name, *status_)->getAttribute("v", *status_).text;
  }

  test::tTestMachine machine_;
  test::tStatus status_;
};

TEST_F(tDataTree, refusesWhatItCannotOpen) {
  EXPECT_FALSE(open("HKEY_LOCAL_MACHINE\\SOFTWARE"));
  expectFailure(-26657, "kStatusHandlerNotFound",
                R"({"additionalInfo":"Could not find separator",)"
                R"("URI":"HKEY_LOCAL_MACHINE\\SOFTWARE"})");
  for (const char* uri : {"file://x", "REG://HKEY_USERS", "://", "reg64x://HKEY_USERS"}) {
    EXPECT_FALSE(open(uri));
    expectFailure(-26657, "kStatusHandlerNotFound",
                  R"({"additionalInfo":"Could not find handler","URI":")"s + uri + "\"}");
  }
  for (const char* root : {"", "hkey_users", "HKEY_USERS2"}) {
    EXPECT_FALSE(open("reg://"s + root));
    expectFailure(-26650, "kStatusFileOpenFault", R"({"rootString":")"s + root + "\"}");
  }
  EXPECT_FALSE(open("reg://HKEY_LOCAL_MACHINE\\SOFTWARE\\No such key"));
  const auto json = nlohmann::ordered_json::parse(status_.text());
  EXPECT_EQ(status_.code(), -26650);
  EXPECT_EQ(json["error_constant"], "kStatusFileOpenFault");
  const auto keys = json["internal_error"];
  EXPECT_EQ(keys["code"], 2) << "not found has this number on both platforms";
  EXPECT_FALSE(keys["string"].get<std::string>().empty());
  EXPECT_FALSE(open(kUri)) << "a failure that stands stops everything";
  EXPECT_EQ(nlohmann::ordered_json::parse(status_.text()), json);
}

TEST_F(tDataTree, opensTheRoots) {
  for (const char* root :
       {"HKEY_LOCAL_MACHINE", "HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER", "HKEY_USERS"}) {
    EXPECT_TRUE(open("reg://"s + root)) << status_.text();
    EXPECT_TRUE(open("reg64://"s + root + '\\')) << status_.text();
  }
}

TEST_F(tDataTree, rendersEveryType) {
  constexpr std::uint32_t kText = 1, kExpandText = 2, kBinary = 3, kNumber = 4, kTextList = 7;
  machine_.setRegistryText(kKey, "longer", "ahead of the others");
  EXPECT_EQ(readValue(kText, "42\0"s), "1|42|42");
  EXPECT_EQ(readValue(kText, "0x10\0"s), "1|0x10|16");
  EXPECT_EQ(readValue(kText, "012\0"s), "1|012|10");
  EXPECT_EQ(readValue(kText, "42 \0"s), "0|42 |0");
  EXPECT_EQ(readValue(kText, "-1\0"s), "1|-1|4294967295");
  EXPECT_EQ(readValue(kText, "99999999999\0"s), "1|99999999999|4294967295");
  EXPECT_EQ(readValue(kText, "\0"s), "0||0");
  EXPECT_EQ(readValue(kText, "ab\0cd\0"s), "0|ab|0");
  EXPECT_EQ(readValue(kText, "no end"s), "0|no end|0");
  EXPECT_EQ(readValue(kText, ""), "0||0");
  EXPECT_EQ(readValue(kNumber, "\xFF\0\0\0"s), "1|0xff|255");
  EXPECT_EQ(readValue(kTextList, "1\0two\0\0"s), "0|1\0two\0\0|0"s);
  EXPECT_EQ(readValue(kBinary, "\x0A\xFF"s), "0|0a ff |0");
  EXPECT_EQ(readValue(kBinary, ""), "0||0");
  EXPECT_EQ(readValue(kExpandText, "%\0"s), "0|25 00 |0");
  EXPECT_EQ(readValue(11, "\1\2\3\4\5\6\7\x08"s), "0|01 02 03 04 05 06 07 08 |0");
}

TEST_F(tDataTree, showsTheAttributesAsTheyWere) {
  machine_.setRegistryText(kKey, "b", "x");
  machine_.setRegistryText(kKey, "C", "y");
  const auto manager = open(kUri);
  machine_.setRegistryText(kKey, "b", "changed");
  machine_.setRegistryText(kKey, "later", "z");
  machine_.setRegistryText(kKey + "\\New"s, "v", "");
  EXPECT_EQ(manager->getChildNames(*status_), tNames{"New"}) << "children are as they are";
  EXPECT_EQ(manager->getAttribute("b", *status_).text, "x");
  EXPECT_EQ(manager->getAttributeNames(*status_), (tNames{"C", "b"}));
  EXPECT_EQ(status_.code(), 0);
  EXPECT_EQ(manager->getAttribute("B", *status_).text, "");
  EXPECT_TRUE(manager->getAttributeNames(*status_).empty());
  expectFailure(-26653, "kStatusAttributeNotFound", R"({"attributeName":"B"})");
}

// Reading ends at the first value that is too long: what the system gives behind it is not there.
TEST_F(tDataTree, endsAtAValueThatIsTooLong) {
  machine_.setRegistryText(kKey, "a", "x");
  machine_.setRegistryValue(kKey, "b", 3, std::string(16301, 'y'));
  EXPECT_EQ(open(kUri)->getAttributeNames(*status_), (tNames{"a", "b"}));
  machine_.setRegistryValue(kKey, "b", 3, std::string(16302, 'y'));
  machine_.setRegistryText(kKey, "c", "z");
  EXPECT_EQ(open(kUri)->getAttributeNames(*status_), tNames{"a"});
  EXPECT_EQ(status_.code(), 0);
}

TEST_F(tDataTree, goesDown) {
  machine_.setRegistryText(kKey + "\\One"s, "v", "1st");
  machine_.setRegistryText(kKey + "\\One\\Two"s, "v", "2nd");
  const auto root = open(kUri);
  const auto one = root->getChild("One", *status_);
  EXPECT_EQ(textBelow(root, "One"), "1st");
  EXPECT_EQ(textBelow(one, "two"), "2nd");
  EXPECT_EQ(textBelow(root, "One\\Two"), "2nd");
  EXPECT_EQ(textBelow(root, "One\\\\Two\\"), "2nd");
  EXPECT_EQ(root->getChildNames(*status_), tNames{"One"});
  EXPECT_TRUE(root->getAttributeNames(*status_).empty());
  EXPECT_EQ(status_.code(), 0);
  status_.record().code = 5;
  EXPECT_TRUE(root->getChild("One", *status_)) << "a warning stops nothing";
  EXPECT_EQ(status_.code(), 5);
  EXPECT_FALSE(one->getChild("Three", *status_));
  EXPECT_FALSE(root->getChild("One", *status_));
  EXPECT_TRUE(root->getChildNames(*status_).empty());
  expectFailure(-26654, "kStatusChildNotFound",
                R"({"childKey":"HKEY_LOCAL_MACHINE\\SOFTWARE\\VarmexTest\\One\\Three"})");
}

// The machine's software has another view for programs of 32 bits, other keys have not.
TEST_F(tDataTree, hasTwoViews) {
  const std::string software = "HKEY_LOCAL_MACHINE\\SOFTWARE";
  machine_.setRegistryText(kKey, "v", "64");
  machine_.setRegistryText("SOFTWARE\\WOW6432Node\\VarmexTest", "v", "32");
  machine_.setRegistryText("SYSTEM\\VarmexTest", "v", "one");
  machine_.setRegistryText("SOFTWARE\\OneView", "v", "64");
  const std::pair<const char*, std::string> cases[] = {
      {"64", "reg://" + software},
      {"64", "reg64://" + software},
      {"32", "reg32://" + software},
      {"32", "reg32://HKEY_LOCAL_MACHINE\\Software\\Wow6432Node"},
      {"one", "reg32://HKEY_LOCAL_MACHINE\\SYSTEM"}};
  for (const auto& [expected, uri] : cases) EXPECT_EQ(textBelow(open(uri), "VarmexTest"), expected);
  EXPECT_FALSE(open("reg32://" + software)->getChild("OneView", *status_));
  varmex_releaseStatus(status_);
  EXPECT_FALSE(open("reg32://HKEY_USERS\\VarmexTest"));
}

}  // namespace

}  // namespace varmex
