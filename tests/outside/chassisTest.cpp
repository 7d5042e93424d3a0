#include "tests/support/model.h"

namespace test {

namespace {

class tChassis : public tModel {
 protected:
  testing::AssertionResult notAvailable(const std::string& debug) {
    return failed(-380757, "varmex_errorInformationNotAvailable", inDebug(debug));
  }
  testing::AssertionResult conflict(const std::string& debug) {
    return failed(-380753, "varmex_errorInformationConflict", inDebug(debug));
  }
  // A classic chassis 4 with these lines in its own section and in that of slot 2.
  tItem classic(const std::string& lines, const std::string& slotLines) {
    describe("[Chassis4]\nVendor=V\nModel=M\n" + lines + "\n[Chassis4Slot2]\nX=1\n" + slotLines,
             "");
    return chassis(4);
  }
};

TEST_F(tChassis, inTheExpressFile) {
  describe("", "[Chassis7]\nVendor=A, Inc.\nModel=B,2\nSerialNumber=1,F\nTriggerBusList=1, 2\n");
  const tItem item = chassis(7);
  ASSERT_TRUE(item) << status_.text();
  EXPECT_EQ(numbers(item, {varmex_u32_ItemType, varmex_u32_ChassisNumber}), "1 7");
  EXPECT_EQ(texts(item, {varmex_str_ChassisVendor, varmex_str_ChassisModel,
                         varmex_str_ChassisSerialNumber, varmex_str_ChassisIdentity,
                         varmex_str_ChassisTriggerBusList}),
            "A, Inc.|B,2|1,F|PXIeChassis(1,F, A Inc., B2)|1, 2");
  EXPECT_EQ(status_.code(), 0);
  text(item, varmex_str_ChassisTriggerManagerIdentifier);
  EXPECT_TRUE(notAvailable(R"({"itemName":"TriggerManager","sectionName_":"Chassis7"})"));
  text(item, varmex_str_ChassisDescriptionFile);
  EXPECT_TRUE(notAvailable(R"({"attribute":4102})"));
  number(item, 4098);
  EXPECT_TRUE(notApplicable(R"({"attribute":4098})"));
  text(item, 4104);
  EXPECT_TRUE(notApplicable(R"({"attribute":4104})"));
}

TEST_F(tChassis, inTheClassicFile) {
  const tItem item = classic("TriggerManager=T\n", "PCISlotPath=a,b,,c\nPCISlotPathRootBus=31\n");
  ASSERT_TRUE(item) << status_.text();
  EXPECT_EQ(texts(item, {varmex_str_ChassisIdentity, varmex_str_ChassisTriggerManagerIdentifier}),
            "PXIChassis(V, M, MR1F:b,,c)|T");
  text(item, varmex_str_ChassisSerialNumber);
  EXPECT_TRUE(notApplicable(R"({"attribute":4100})"));
  EXPECT_EQ(text(classic("", "PCISlotPath=a,\n"), varmex_str_ChassisIdentity),
            "PXIChassis(V, M, MR00:)");
}

TEST_F(tChassis, needsASlotPath) {
  const std::string invalid =
      R"({"message":"The chassis does not have valid slot paths in the system description file."})";
  EXPECT_FALSE(classic("", ""));
  EXPECT_TRUE(notFound("Section Chassis4Slot2 item: PCISlotPath not found"));
  for (const char* lines : {"PCISlotPath=a\n", "PCISlotPath=a,b\nPCISlotPathRootBus=256\n",
                            "PCISlotPath=a,b\nPCISlotPathRootBus=-1\n"}) {
    EXPECT_FALSE(classic("", lines));
    EXPECT_TRUE(conflict(invalid)) << lines;
  }
  EXPECT_FALSE(classic("", "PCISlotPath=a,b\nPCISlotPathRootBus=0x10\n"));
  EXPECT_TRUE(
      holdsWrapped(status_, -380765, "varmex_softwareFault",
                   "bad lexical cast: source type value could not be interpreted as target"));
}

TEST_F(tChassis, inBothFilesMustAgree) {
  const std::string common = "[Chassis1]\nVendor=V\nTriggerManager=T\nDescriptionFile=";
  describe(common + "a\nModel=M\n", common + "b\nSerialNumber=S\nModel=M\n");
  const tItem item = chassis(1);
  ASSERT_TRUE(item) << status_.text();
  EXPECT_EQ(text(item, varmex_str_ChassisIdentity), "PXIeChassis(S, V, M)");
  text(item, varmex_str_ChassisDescriptionFile);
  EXPECT_TRUE(notAvailable(R"({"attribute":4102})"));
  describe(common + "a\nModel=M\n", common + "a\nSerialNumber=S\nModel=m\n");
  EXPECT_FALSE(chassis(1));
  EXPECT_TRUE(conflict(R"({"itemName":"Model","sectionName_":"Chassis1"})"));
  describe("[Chassis1]\nVendor=V\nModel=M\n", "[Chassis1]\nVendor=V\nModel=M\n");
  EXPECT_FALSE(chassis(1));
  EXPECT_TRUE(notFound("Section Chassis1 item: SerialNumber not found"));
}

TEST_F(tChassis, unknownOnesAreRefused) {
  describe("", "");
  EXPECT_FALSE(chassis(4294967295));
  EXPECT_TRUE(failed(-380751, "varmex_errorUnknownItem",
                     R"({"varmex_debug":{"missingSection":"Chassis4294967295"},)"
                     R"("chassisNumber":4294967295,"type":"chassis"})"));
}

TEST_F(tChassis, findsItsDescriptionFile) {
  const std::string key = "SOFTWARE\\PXISA\\CurrentVersion";
  const std::string full = (machine_.folder() / "x.ini").string();
  const auto descriptionFile = [this](const std::string& file) {
    return text(classic("DescriptionFile=" + file, "PCISlotPath=a,b\n"),
                varmex_str_ChassisDescriptionFile);
  };
  EXPECT_EQ(descriptionFile(full), full);
  EXPECT_EQ(descriptionFile("x.ini"), "<null>");
  EXPECT_TRUE(notAvailable(R"({"attribute":4102})"));
  machine_.setRegistryText(key, "ChassisDescriptionFilePath", "folder");
  EXPECT_EQ(descriptionFile("x.ini"), (std::filesystem::path("folder") / "x.ini").string());
  machine_.setRegistryText(key, "ChassisDescriptionFilePath", std::string(258, 'd'));
  EXPECT_EQ(descriptionFile("x").size(), 260U);
  machine_.setRegistryText(key, "ChassisDescriptionFilePath", std::string(260, 'd'));
  EXPECT_EQ(descriptionFile("x.ini"), "<null>");
  varmex_releaseStatus(status_);
  machine_.setRegistryNumber(key, "ChassisDescriptionFilePath", 7);
  EXPECT_EQ(descriptionFile("x.ini"), "<null>");
}

TEST_F(tChassis, isContainedInNothing) {
  const tItem item = classic("", "PCISlotPath=a,b\n");
  EXPECT_FALSE(varmex_openContainingItem(item.get(), 1, status_));
  EXPECT_TRUE(failed(-380755, "varmex_errorInvalidParameter",
                     inDebug(R"({"message":"You cannot get the containing item for a chassis"})")));
  const tItem copy(varmex_duplicate(item.get(), status_));
  EXPECT_EQ(text(copy, varmex_str_ChassisIdentity), "PXIChassis(V, M, MR00:b)");
}

}  // namespace

}  // namespace test
