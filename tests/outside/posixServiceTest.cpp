#include "tests/support/model.h"
#include "tests/support/serviceLibrary.h"

namespace test {

namespace {

using tLinkedService = tModel;

TEST_F(tLinkedService, functionsOfLibrariesBehindItDoNotCount) {
  describe("", "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nTriggerManager=T\n");
  for (const auto& [variant, expected] : {std::pair{"full", 0U}, {"withlinkedmode", 1U}}) {
    const tInstalledServiceLibrary service(variant, "mode 2");
    EXPECT_EQ(number(chassis(1), varmex_u32_IsTriggerManagerNative), expected) << variant;
    EXPECT_EQ(service.takeCalls().find("<mode") == std::string::npos, expected == 1U) << variant;
    EXPECT_EQ(status_.code(), 0) << status_.text();
  }
}

}  // namespace

}  // namespace test
