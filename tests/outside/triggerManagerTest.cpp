#include <tuple>

#include "tests/support/model.h"
#include "tests/support/serviceLibrary.h"

namespace test {

namespace {

class tTriggerManager : public tModel {
 protected:
  // A chassis with this trigger manager; without one for "".
  tItem managedBy(const std::string& manager) {
    describe("", kExpressChassis + (manager.empty() ? "" : "TriggerManager=" + manager + '\n'));
    return chassis(1);
  }
  std::string library(const tItem& item) {
    return orFailure(text(item, varmex_str_ChassisTriggerManagerLibrary));
  }
  std::string isNative(const std::string& manager) {
    return orFailure(std::to_string(number(managedBy(manager), varmex_u32_IsTriggerManagerNative)));
  }
  const std::string managers_ = "SOFTWARE\\PXISA\\Services\\Trigger Managers\\";
  const std::string none_ = refusal(R"(TriggerManagerLibraryNotFound {"attribute":4099})");
};

TEST_F(tTriggerManager, libraryOfTheServicesTree) {
  machine_.setRegistryText(managers_ + "Bare", "library", "wrong case");
  machine_.setRegistryNumber(managers_ + "Number", "Library", 5);
  for (const auto& [manager, file] :
       {std::pair{"Alone", "alone.dll"}, {"A\\B", "b.dll"}, {"A\\B\\C", "c.dll"}, {"Empty", ""}}) {
    machine_.setRegistryText(managers_ + manager, "Library", file);
    EXPECT_EQ(library(managedBy(manager)), *file ? file : none_);
  }
  for (const char* manager : {"Bare", "Nowhere", "A\\Nowhere", "A"}) {
    EXPECT_EQ(library(managedBy(manager)), none_);
  }
  EXPECT_EQ(library(managedBy("Number")),
            refusal(R"(TriggerManagerLibraryNotFound {"valueType":1})"));
}

TEST_F(tTriggerManager, libraryIsKeptOnceFound) {
  const tItem item = managedBy("Later");
  EXPECT_EQ(library(item), none_);
  machine_.setRegistryText(managers_ + "Later", "Library", "first.dll");
  EXPECT_EQ(library(item), "first.dll");
  machine_.setRegistryText(managers_ + "Later", "Library", "second.dll");
  EXPECT_EQ(library(item), "first.dll");
  EXPECT_EQ(library(tItem(varmex_duplicate(item.get(), status_))), "first.dll");
  EXPECT_EQ(library(chassis(1)), "second.dll");
}

TEST_F(tTriggerManager, isNativeWithoutAServiceLibrary) {
  EXPECT_EQ(isNative("T"), "1");
  const tInstalledServiceLibrary service("full");
  tTestMachine::write(service.file(), "no library");
  EXPECT_EQ(isNative(""), "1");
  EXPECT_EQ(service.takeCalls(), "");
}

// Whatever fails, what was opened is closed and the library freed.
TEST_F(tTriggerManager, theServiceLibraryDecides) {
  const auto own = [](const std::string& function) {
    return R"( {"file":")" + function + R"(","line":7,"component":"dunmor"})";
  };
  const char* const whole = "<load><open><mode V|M|T><close><unload>";
  const std::tuple<const char*, const char*, const char*, std::string, const char*> cases[] = {
      {"full", "", "T", "1", whole},
      {"full", "mode 2", "", "0", "<load><open><mode V|M|None><close><unload>"},
      {"full", "modeStatus -7", "T", "-7" + own("modeStatus"), whole},
      {"full", "modeStatus 7 mode 1", "T", "0", whole},
      {"full", "open -8", "T", "-8" + own("open"), "<load><open><unload>"},
      {"withoutopen", "", "T", "-52005", "<load><unload>"},
      {"withoutclose", "", "T", "-52005", "<load><unload>"}};
  for (const auto& [variant, answers, manager, expected, calls] : cases) {
    const tInstalledServiceLibrary service(variant, answers);
    // What it lacks is told with a place in the library's own source.
    EXPECT_EQ(isNative(manager).substr(0, expected.size()), expected) << answers;
    EXPECT_EQ(service.takeCalls(), calls) << variant << answers;
  }
}

TEST_F(tTriggerManager, theListDecidesWhereTheServiceLibraryCannot) {
  using namespace std::string_literals;
  constexpr const char* kKey = "SOFTWARE\\Corvane\\COR-DUNMOR";
  const tInstalledServiceLibrary service("withoutmode");
  EXPECT_EQ(isNative("A\\T"), "1");
  EXPECT_EQ(service.takeCalls(), "<load><unload>");
  machine_.setRegistryText(kKey, "Another", "");
  EXPECT_EQ(isNative("A\\T"), "1");
  constexpr std::uint32_t kText = 1, kTextList = 7;
  const std::tuple<std::uint32_t, std::string, const char*, const char*> cases[] = {
      {kTextList, "B\0A\\T\0\0"s, "A\\T", "0"}, {kTextList, "B\0A\\T\0\0"s, "B", "0"},
      {kTextList, "B\0A\\T\0\0"s, "b", "1"},    {kTextList, "B\0\0A\\T\0\0"s, "A\\T", "1"},
      {kTextList, "A\\T"s, "A\\T", "0"},        {kTextList, "", "A\\T", "1"},
      {kText, "A\\T\0"s, "A\\T", "1"}};
  for (const auto& [type, list, manager, expected] : cases) {
    machine_.setRegistryValue(kKey, "TriggerManagersNoForward", type, list);
    EXPECT_EQ(isNative(manager), expected);
  }
  const std::string refused = R"({"attribute":"varmex_str_ChassisTriggerManagerIdentifier",)";
  for (const std::string name : {"none", "NONE", "None", ""}) {
    const std::string told = R"("tmIdentifier":")" + (name.empty() ? "None" : name) + "\"}";
    EXPECT_EQ(isNative(name), refusal("InformationNotAvailable " + refused + told));
  }
  EXPECT_EQ(isNative("\"\""),
            refusal("InformationConflict " + refused + R"("tmIdentifier":"<empty>"})"));
}

constexpr std::uint32_t kSynchronize = 1;

class tSynchronization : public tModel {
 protected:
  static std::string warningOf(std::int32_t code) {
    return failure(380762, "varmex_warningFailedSync",
                   R"({"wrappedCode":)" + std::to_string(code) + "}");
  }
  bool opens(std::uint32_t flags = kSynchronize) {
    return tItem(varmex_openPXISession(flags, status_)) != nullptr;
  }
};

TEST_F(tSynchronization, runsOnlyWhenAskedFor) {
  const tInstalledServiceLibrary service("full");
  EXPECT_TRUE(opens(0xFFFFFFFE));
  EXPECT_EQ(service.takeCalls(), "");
  EXPECT_TRUE(opens(0xFFFFFFFF));
  EXPECT_EQ(service.takeCalls(), "<load><initialize -1 0 0><unload>");
  EXPECT_EQ(status_.code(), 0);
  status_.record().code = -1;
  EXPECT_FALSE(opens());
  EXPECT_EQ(service.takeCalls(), "");
}

TEST_F(tSynchronization, itsFailureIsAWarning) {
  EXPECT_TRUE(opens());
  EXPECT_EQ(takeFailure(), warningOf(-380766));
  for (const auto& [variant, code, calls] :
       {std::tuple{"withoutinitialize", -52005, "<load><unload>"},
        {"full", -9, "<load><initialize -1 0 0><unload>"}}) {
    const tInstalledServiceLibrary service(variant, "initialize -9");
    EXPECT_TRUE(opens());
    EXPECT_EQ(takeFailure(), warningOf(code));
    EXPECT_EQ(service.takeCalls(), calls);
  }
  // An earlier warning stands, without a text; an error takes the warning's place.
  status_.record().code = 5;
  EXPECT_TRUE(opens());
  EXPECT_EQ(status_.code(), 5);
  EXPECT_EQ(status_.text(), "{}");
  varmex_releaseStatus(status_);
  machine_.writePxiSys("[System]\n");
  EXPECT_FALSE(opens());
  EXPECT_EQ(takeFailure(),
            refusal(R"(InformationNotAvailable "Section System item: ChassisList not found")"));
  // Nobody to be told is no reason to fail.
  std::filesystem::remove(machine_.pxiSys());
  EXPECT_TRUE(tItem(varmex_openPXISession(kSynchronize, nullptr)));
}

}  // namespace

}  // namespace test
