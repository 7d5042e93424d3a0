#ifndef TESTS_SUPPORT_SHARING_H
#define TESTS_SUPPORT_SHARING_H

#include "tests/support/model.h"

namespace test {

// Sessions on the same bytes share what they read: a text that two of them answer stands at one
// place in memory.
class tSharing : public tModel {
 protected:
  static tItem open() {
    tStatus status;
    tItem session(varmex_openPXISession(0, status));
    EXPECT_TRUE(session) << status.text();
    return session;
  }

  // What the left local bus of slot 2 is called, in the description that `write` has written.
  static const char* busName(const tItem& session) {
    tStatus status;
    const tItem chassis(varmex_openChassisByNumber(session.get(), 1, status));
    const tItem slot(varmex_openSlotByNumber(chassis.get(), 2, status));
    const char* const text = varmex_getStringAttribute(slot.get(), varmex_str_LocalBusLeft, status);
    EXPECT_TRUE(text) << status.text();
    return text ? text : "";
  }

  void write(const std::string& name) {
    machine_.writePxieSys(
        "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=2\n"
        "[Chassis1Slot2]\nSlotType=PXIePeripheralSlot\nLocalBusLeft=" +
        name + "\n");
    machine_.writePxiSys("; classic\n");
  }
};

}  // namespace test

#endif
