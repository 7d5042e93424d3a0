#include <nlohmann/json.hpp>

#include "tests/support/model.h"
#include "tests/support/serviceLibrary.h"

namespace test {

namespace {

constexpr const char* kManagers = "SOFTWARE\\PXISA\\Services\\Trigger Managers";
constexpr std::uint32_t kSynchronize = 1;

class tTriggerManager : public tModel {
 protected:
  // A chassis with this line for its trigger manager.
  tItem managedBy(const std::string& line) {
    describe("", "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\n" + line);
    return chassis(1);
  }
  std::string library(const tItem& item) {
    return text(item, varmex_str_ChassisTriggerManagerLibrary);
  }
  std::uint32_t isNative(const tItem& item) {
    return number(item, varmex_u32_IsTriggerManagerNative);
  }
  testing::AssertionResult noLibrary() {
    return failed(-380761, "varmex_errorTriggerManagerLibraryNotFound",
                  inDebug(R"({"attribute":4099})"));
  }
  // The failure of a function that the service library should have.
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
  machine_.setRegistryText(std::string(kManagers) + "\\Alone", "Library", "alone.dll");
  machine_.setRegistryText(std::string(kManagers) + "\\A\\B", "Library", "b.dll");
  machine_.setRegistryText(std::string(kManagers) + "\\A\\B\\C", "Library", "c.dll");
  machine_.setRegistryText(std::string(kManagers) + "\\Empty", "Library", "");
  machine_.setRegistryText(std::string(kManagers) + "\\Bare", "library", "wrong case");
  machine_.setRegistryNumber(std::string(kManagers) + "\\Number", "Library", 5);
  EXPECT_EQ(library(managedBy("TriggerManager=Alone\n")), "alone.dll");
  EXPECT_EQ(library(managedBy("TriggerManager=A\\B\n")), "b.dll");
  EXPECT_EQ(library(managedBy("TriggerManager=A\\B\\C\n")), "c.dll");
  for (const char* name : {"Empty", "Bare", "Nowhere", "A\\Nowhere", "A"}) {
    library(managedBy(std::string("TriggerManager=") + name + '\n'));
    EXPECT_TRUE(noLibrary()) << name;
  }
  library(managedBy("TriggerManager=Number\n"));
  EXPECT_TRUE(
      failed(-380761, "varmex_errorTriggerManagerLibraryNotFound", inDebug(R"({"valueType":1})")));
  library(managedBy(""));
  EXPECT_TRUE(failed(-380757, "varmex_errorInformationNotAvailable",
                     inDebug(R"({"itemName":"TriggerManager","sectionName_":"Chassis1"})")));
}

TEST_F(tTriggerManager, libraryIsKeptOnceFound) {
  const tItem item = managedBy("TriggerManager=Later\n");
  library(item);
  EXPECT_TRUE(noLibrary());
  const std::string key = std::string(kManagers) + "\\Later";
  machine_.setRegistryText(key, "Library", "first.dll");
  EXPECT_EQ(library(item), "first.dll");
  machine_.setRegistryText(key, "Library", "second.dll");
  EXPECT_EQ(library(item), "first.dll");
  EXPECT_EQ(library(tItem(varmex_duplicate(item.get(), status_))), "first.dll");
  EXPECT_EQ(library(chassis(1)), "second.dll");
}

TEST_F(tTriggerManager, isNativeWithoutAServiceLibrary) {
  EXPECT_EQ(isNative(managedBy("TriggerManager=T\n")), 1U);
  EXPECT_EQ(isNative(managedBy("")), 1U);
  EXPECT_EQ(status_.code(), 0);
  const tInstalledServiceLibrary service("full");
  tTestMachine::write(service.file(), "no library");
  EXPECT_EQ(isNative(managedBy("")), 1U);
  EXPECT_EQ(service.takeCalls(), "");
}

TEST_F(tTriggerManager, theServiceLibraryDecides) {
  const tInstalledServiceLibrary service("full");
  EXPECT_EQ(isNative(managedBy("TriggerManager=T\n")), 1U);
  EXPECT_EQ(service.takeCalls(), "<load><open><mode V|M|T><close><unload>");
  service.tell("mode 2");
  EXPECT_EQ(isNative(managedBy("")), 0U);
  EXPECT_EQ(service.takeCalls(), "<load><open><mode V|M|None><close><unload>");
  EXPECT_EQ(status_.code(), 0);
}

// Whatever fails, what was opened is closed and the library freed.
TEST_F(tTriggerManager, theServiceLibraryFails) {
  const tItem item = managedBy("TriggerManager=T\n");
  {
    const tInstalledServiceLibrary service("full", "modeStatus -7");
    EXPECT_EQ(isNative(item), 0U);
    EXPECT_EQ(status_.code(), -7);
    EXPECT_EQ(status_.text(), R"({"file":"modeStatus","line":7,"component":"dunmor"})");
    EXPECT_EQ(service.takeCalls(), "<load><open><mode V|M|T><close><unload>");
    varmex_releaseStatus(status_);
    service.tell("modeStatus 7 mode 1");
    EXPECT_EQ(isNative(item), 0U);
    EXPECT_EQ(status_.code(), 0);
    service.takeCalls();
    service.tell("open -8");
    isNative(item);
    EXPECT_EQ(status_.code(), -8);
    EXPECT_EQ(service.takeCalls(), "<load><open><unload>");
    varmex_releaseStatus(status_);
  }
  for (const char* variant : {"withoutopen", "withoutclose"}) {
    const tInstalledServiceLibrary service(variant);
    EXPECT_EQ(isNative(item), 0U);
    EXPECT_TRUE(lacksFunction()) << variant;
    EXPECT_EQ(service.takeCalls(), "<load><unload>") << variant;
  }
}

TEST_F(tTriggerManager, theListDecidesWhereTheServiceLibraryCannot) {
  using namespace std::string_literals;
  constexpr const char* kKey = "SOFTWARE\\Corvane\\COR-DUNMOR";
  constexpr const char* kValue = "TriggerManagersNoForward";
  constexpr std::uint32_t kTextList = 7;
  const tInstalledServiceLibrary service("withoutmode");
  const auto isManagerNative = [this](const std::string& manager) {
    return isNative(managedBy("TriggerManager=" + manager + '\n'));
  };
  EXPECT_EQ(isManagerNative("A\\T"), 1U) << "without the key";
  EXPECT_EQ(service.takeCalls(), "<load><unload>");
  machine_.setRegistryText(kKey, "Another", "");
  EXPECT_EQ(isManagerNative("A\\T"), 1U) << "without the value";
  machine_.setRegistryValue(kKey, kValue, kTextList, "B\0A\\T\0\0"s);
  EXPECT_EQ(isManagerNative("A\\T"), 0U);
  EXPECT_EQ(isManagerNative("B"), 0U);
  EXPECT_EQ(isManagerNative("b"), 1U);
  machine_.setRegistryValue(kKey, kValue, kTextList, "B\0\0A\\T\0\0"s);
  EXPECT_EQ(isManagerNative("A\\T"), 1U) << "behind the end";
  machine_.setRegistryValue(kKey, kValue, kTextList, "A\\T"s);
  EXPECT_EQ(isManagerNative("A\\T"), 0U) << "without its end";
  machine_.setRegistryValue(kKey, kValue, kTextList, "");
  EXPECT_EQ(isManagerNative("A\\T"), 1U) << "empty";
  machine_.setRegistryValue(kKey, kValue, 1, "A\\T\0"s);
  EXPECT_EQ(isManagerNative("A\\T"), 1U) << "of another type";
  EXPECT_EQ(status_.code(), 0);
  for (const char* none : {"none", "NONE", ""}) {
    const std::string name = *none ? none : "None";
    isNative(managedBy(*none ? "TriggerManager=" + name + '\n' : ""));
    EXPECT_TRUE(failed(-380757, "varmex_errorInformationNotAvailable",
                       inDebug(R"({"attribute":"varmex_str_ChassisTriggerManagerIdentifier",)"
                               R"("tmIdentifier":")" +
                               name + "\"}")));
  }
  isManagerNative("\"\"");
  EXPECT_TRUE(failed(-380753, "varmex_errorInformationConflict",
                     inDebug(R"({"attribute":"varmex_str_ChassisTriggerManagerIdentifier",)"
                             R"("tmIdentifier":"<empty>"})")));
}

TEST_F(tTriggerManager, aConflictOfTheFilesIsNoMissingManager) {
  describe("[Chassis1]\nVendor=V\nModel=M\nTriggerManager=A\n",
           "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nTriggerManager=B\n");
  isNative(chassis(1));
  EXPECT_EQ(status_.code(), varmex_errorInformationConflict);
}

class tSynchronization : public tModel {
 protected:
  testing::AssertionResult warnedOf(std::int32_t code) {
    return failed(380762, "varmex_warningFailedSync",
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
  EXPECT_TRUE(warnedOf(-380766));
  {
    const tInstalledServiceLibrary service("withoutinitialize");
    EXPECT_TRUE(opens());
    EXPECT_TRUE(warnedOf(-52005));
    EXPECT_EQ(service.takeCalls(), "<load><unload>");
  }
  const tInstalledServiceLibrary service("full", "initialize -9");
  EXPECT_TRUE(opens());
  EXPECT_TRUE(warnedOf(-9));
  EXPECT_EQ(service.takeCalls(), "<load><initialize -1 0 0><unload>");
  // An earlier warning stands, without a text; an error takes the warning's place.
  status_.record().code = 5;
  EXPECT_TRUE(opens());
  EXPECT_EQ(status_.code(), 5);
  EXPECT_EQ(status_.text(), "{}");
  varmex_releaseStatus(status_);
  machine_.writePxiSys("[System]\n");
  EXPECT_FALSE(opens());
  EXPECT_TRUE(notFound("Section System item: ChassisList not found"));
  // Nobody to be told is no reason to fail.
  std::filesystem::remove(machine_.pxiSys());
  EXPECT_TRUE(tItem(varmex_openPXISession(kSynchronize, nullptr)));
}

}  // namespace

}  // namespace test
