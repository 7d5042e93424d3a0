#include <array>
#include <nlohmann/json.hpp>

#include "tests/support/model.h"
#include "tests/support/serviceLibrary.h"

namespace test {

namespace {

constexpr const char* kManagers = "SOFTWARE\\PXISA\\Services\\Trigger Managers";
constexpr std::uint32_t kSynchronize = 1;

class tTriggerManager : public tModel {
 protected:
  // A chassis with this trigger manager; without one for "".
  tItem managedBy(const std::string& manager) {
    describe("", kExpressChassis + (manager.empty() ? "" : "TriggerManager=" + manager + '\n'));
    return chassis(1);
  }
  void expectLibrary(const tItem& item, const std::string& library) {
    const std::string answer = text(item, varmex_str_ChassisTriggerManagerLibrary);
    EXPECT_EQ(status_.code() == 0 ? answer : takeFailure(), library);
  }
  void expectNative(const tItem& item, const std::string& isNative) {
    const std::string answer = std::to_string(number(item, varmex_u32_IsTriggerManagerNative));
    EXPECT_EQ(status_.code() == 0 ? answer : takeFailure(), isNative);
  }
  static std::string noLibrary(const std::string& debug = R"({"attribute":4099})") {
    return failure(-380761, "varmex_errorTriggerManagerLibraryNotFound", inDebug(debug));
  }
  // Nothing but where it failed.
  testing::AssertionResult lacksFunction() {
    const auto json = nlohmann::ordered_json::parse(status_.text());
    const bool isIt = status_.code() == -52005 && json.size() == 3 && json.contains("line") &&
                      json["component"] == "varmex" &&
                      json["file"].get<std::string>().ends_with("library.cpp");
    varmex_releaseStatus(status_);
    return isIt ? testing::AssertionSuccess() : testing::AssertionFailure() << json.dump();
  }
};

TEST_F(tTriggerManager, libraryOfTheServicesTree) {
  const std::string managers = kManagers + std::string("\\");
  for (const auto& [key, name, library] : {std::array{"Alone", "Library", "alone.dll"},
                                           {"A\\B", "Library", "b.dll"},
                                           {"A\\B\\C", "Library", "c.dll"},
                                           {"Empty", "Library", ""},
                                           {"Bare", "library", "wrong case"}}) {
    machine_.setRegistryText(managers + key, name, library);
  }
  machine_.setRegistryNumber(managers + "Number", "Library", 5);
  const std::pair<const char*, std::string> cases[] = {
      {"Alone", "alone.dll"},
      {"A\\B", "b.dll"},
      {"A\\B\\C", "c.dll"},
      {"Empty", noLibrary()},
      {"Bare", noLibrary()},
      {"Nowhere", noLibrary()},
      {"A\\Nowhere", noLibrary()},
      {"A", noLibrary()},
      {"Number", noLibrary(R"({"valueType":1})")},
      {"", notAvailable(R"({"itemName":"TriggerManager","sectionName_":"Chassis1"})")}};
  for (const auto& [manager, library] : cases) expectLibrary(managedBy(manager), library);
}

TEST_F(tTriggerManager, libraryIsKeptOnceFound) {
  const tItem item = managedBy("Later");
  expectLibrary(item, noLibrary());
  const std::string key = std::string(kManagers) + "\\Later";
  machine_.setRegistryText(key, "Library", "first.dll");
  expectLibrary(item, "first.dll");
  machine_.setRegistryText(key, "Library", "second.dll");
  expectLibrary(item, "first.dll");
  expectLibrary(tItem(varmex_duplicate(item.get(), status_)), "first.dll");
  expectLibrary(chassis(1), "second.dll");
}

TEST_F(tTriggerManager, isNativeWithoutAServiceLibrary) {
  expectNative(managedBy("T"), "1");
  expectNative(managedBy(""), "1");
  const tInstalledServiceLibrary service("full");
  tTestMachine::write(service.file(), "no library");
  expectNative(managedBy(""), "1");
  EXPECT_EQ(service.takeCalls(), "");
}

TEST_F(tTriggerManager, theServiceLibraryDecides) {
  const tInstalledServiceLibrary service("full");
  expectNative(managedBy("T"), "1");
  EXPECT_EQ(service.takeCalls(), "<load><open><mode V|M|T><close><unload>");
  service.tell("mode 2");
  expectNative(managedBy(""), "0");
  EXPECT_EQ(service.takeCalls(), "<load><open><mode V|M|None><close><unload>");
}

// Whatever fails, what was opened is closed and the library freed.
TEST_F(tTriggerManager, theServiceLibraryFails) {
  const tItem item = managedBy("T");
  const auto own = [](const std::string& function) {
    return R"({"file":")" + function + R"(","line":7,"component":"dunmor"})";
  };
  const struct {
    const char* answers;
    std::int32_t code;
    std::string text;
    const char* calls;
  } cases[] = {{"modeStatus -7", -7, own("modeStatus"), "<load><open><mode V|M|T><close><unload>"},
               {"modeStatus 7 mode 1", 0, "{}", "<load><open><mode V|M|T><close><unload>"},
               {"open -8", -8, own("open"), "<load><open><unload>"}};
  for (const auto& [answers, code, text, calls] : cases) {
    const tInstalledServiceLibrary service("full", answers);
    EXPECT_EQ(number(item, varmex_u32_IsTriggerManagerNative), 0U);
    EXPECT_EQ(status_.code(), code);
    EXPECT_EQ(status_.text(), text);
    EXPECT_EQ(service.takeCalls(), calls);
    varmex_releaseStatus(status_);
  }
  for (const char* variant : {"withoutopen", "withoutclose"}) {
    const tInstalledServiceLibrary service(variant);
    EXPECT_EQ(number(item, varmex_u32_IsTriggerManagerNative), 0U);
    EXPECT_TRUE(lacksFunction()) << variant;
    EXPECT_EQ(service.takeCalls(), "<load><unload>") << variant;
  }
}

TEST_F(tTriggerManager, theListDecidesWhereTheServiceLibraryCannot) {
  using namespace std::string_literals;
  constexpr const char* kKey = "SOFTWARE\\Corvane\\COR-DUNMOR";
  const tInstalledServiceLibrary service("withoutmode");
  expectNative(managedBy("A\\T"), "1");
  EXPECT_EQ(service.takeCalls(), "<load><unload>");
  machine_.setRegistryText(kKey, "Another", "");
  expectNative(managedBy("A\\T"), "1");
  constexpr std::uint32_t kText = 1, kTextList = 7;
  const struct {
    std::uint32_t type;
    std::string list;
    const char* manager;
    const char* isNative;
  } cases[] = {
      {kTextList, "B\0A\\T\0\0"s, "A\\T", "0"}, {kTextList, "B\0A\\T\0\0"s, "B", "0"},
      {kTextList, "B\0A\\T\0\0"s, "b", "1"},    {kTextList, "B\0\0A\\T\0\0"s, "A\\T", "1"},
      {kTextList, "A\\T"s, "A\\T", "0"},        {kTextList, "", "A\\T", "1"},
      {kText, "A\\T\0"s, "A\\T", "1"},
  };
  for (const auto& [type, list, manager, isNative] : cases) {
    machine_.setRegistryValue(kKey, "TriggerManagersNoForward", type, list);
    expectNative(managedBy(manager), isNative);
  }
  const auto detail = [](const std::string& identifier) {
    return R"({"attribute":"varmex_str_ChassisTriggerManagerIdentifier","tmIdentifier":")" +
           identifier + "\"}";
  };
  for (const char* name : {"none", "NONE", "None"}) {
    expectNative(managedBy(name), notAvailable(detail(name)));
  }
  expectNative(managedBy(""), notAvailable(detail("None")));
  expectNative(managedBy("\"\""), conflict(detail("<empty>")));
}

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
  {
    const tInstalledServiceLibrary service("withoutinitialize");
    EXPECT_TRUE(opens());
    EXPECT_EQ(takeFailure(), warningOf(-52005));
    EXPECT_EQ(service.takeCalls(), "<load><unload>");
  }
  const tInstalledServiceLibrary service("full", "initialize -9");
  EXPECT_TRUE(opens());
  EXPECT_EQ(takeFailure(), warningOf(-9));
  EXPECT_EQ(service.takeCalls(), "<load><initialize -1 0 0><unload>");
  // An earlier warning stands, without a text; an error takes the warning's place.
  status_.record().code = 5;
  EXPECT_TRUE(opens());
  EXPECT_EQ(status_.code(), 5);
  EXPECT_EQ(status_.text(), "{}");
  varmex_releaseStatus(status_);
  machine_.writePxiSys("[System]\n");
  EXPECT_FALSE(opens());
  EXPECT_EQ(takeFailure(), notFound("Section System item: ChassisList not found"));
  // Nobody to be told is no reason to fail.
  std::filesystem::remove(machine_.pxiSys());
  EXPECT_TRUE(tItem(varmex_openPXISession(kSynchronize, nullptr)));
}

}  // namespace

}  // namespace test
