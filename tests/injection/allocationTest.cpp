// Every exported function with every one of its allocations failing in turn.

#include <functional>
#include <nlohmann/json.hpp>

#include "tests/injection/allocation.h"
#include "tests/support/model.h"
#include "tests/support/routing.h"
#include "tests/support/serviceLibrary.h"

namespace test {

namespace {

constexpr const char* kPxiSys =
    "[System]\nChassisList=1,2\n"
    "[Chassis1]\nSlotList=5\nTriggerBridgeList=1\n"
    "[Chassis1TriggerBridge1]\nLineMappingSpec=1\nSourceTriggerBus=1\n"
    "[Chassis1LineMappingSpec1]\nPXI_TRIG0=0,1,2,3,4,5,6,7\n"
    "[Chassis1Slot5]\nFunctionList=0\n"
    "[Chassis1Slot5Function0]\nPCIBusNumber=9\nPCIDeviceNumber=1\nDeviceList=1\n"
    "[Chassis1Slot5Function0Device1]\nFunctionList=0\n"
    "[Chassis2]\nVendor=Vendor of some length\nModel=Model\nSlotList=2\nDescriptionFile=x.ini\n"
    "[Chassis2Slot2]\nPCISlotPath=a,b\n";

constexpr const char* kPxieSys =
    "[System]\nChassisList=1\n"
    "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=3\nTriggerBusList=1\n"
    "StarTriggerList=1\nStarSystemTimingSetList=1\n"
    "[Chassis1TriggerBus1]\nSlotList=3\n[Chassis1StarTrigger1]\nPXI_STAR0=3\nSystemTimingSlot=4\n"
    "[Chassis1StarSystemTimingSets1]\nStarSystemTimingSet0=3\n"
    "[Chassis1Slot3]\nSlotType=PXIePeripheralSlot\nAddressInfo=PXI0::5-3.1::INSTR\nVendor=W\n"
    "Joined Line1=a\nJoined Line2=b\n[Chassis1]\nLater=1\n[Chassis1Slot3]\nLater=1\n";

// The result of a call, and how to give it back.
using tCallUnderTest = std::function<bool(tStatusRecord*)>;

bool openSession(tStatusRecord* status) {
  return tItem(varmex_openPXISession(0, status)) != nullptr;
}
bool openSynchronized(tStatusRecord* status) {
  return tItem(varmex_openPXISession(1, status)) != nullptr;
}

class tInjection : public tModel {
 protected:
  void SetUp() override {
    machine_.writeConfiguration();
    machine_.setRegistryText("SOFTWARE\\PXISA\\CurrentVersion", "ChassisDescriptionFilePath", "d");
    describe(kPxiSys, kPxieSys);
    ASSERT_TRUE(session_) << status_.text();
  }

  // `call` answers whether its result is more than null. It must come to the code `expected`, or to
  // that of exhausted memory with the null result, whichever allocation fails; and afterwards it
  // must work as ever.
  void inject(const char* name, std::int32_t expected, const tCallUnderTest& call) {
    for (long n = 1;; ++n) {
      tStatus status;
      failAllocation(n);
      const bool hasResult = call(status);
      const bool failed = allocationFailed();
      const bool asExpected = status.code() == expected && hasResult == (expected >= 0);
      // The platform layer has a code of its own for the paths that it takes.
      const bool outOfMemory =
          (status.code() == varmex_errorMemoryFull || status.code() == ostrelerr_memoryFull) &&
          !hasResult;
      EXPECT_TRUE(asExpected || (failed && outOfMemory))
          << name << ", allocation " << n << ": " << status.code() << ' ' << status.text();
      EXPECT_TRUE(isWellFormed(status.text())) << name << ": " << status.text();
      if (!failed || HasFailure()) {
        EXPECT_TRUE(expected != 0 || n > 1 || hasResult) << name;
        return;
      }
    }
  }

  void injectAttributes(const char* name, varmex_Item* item, std::uint32_t first,
                        std::uint32_t last) {
    for (std::uint32_t attribute = first; attribute <= last; ++attribute) {
      tStatus status;
      // What the call answers without a failure is what it must answer in the end.
      const tItem copy(item ? varmex_duplicate(item, status) : nullptr);
      varmex_Item* const target = copy ? copy.get() : item;
      varmex_releaseStatus(status);
      varmex_getStringAttribute(target, attribute, status);
      inject(name, status.code(), [=](tStatusRecord* record) {
        return varmex_getStringAttribute(target, attribute, record) != nullptr;
      });
      varmex_releaseStatus(status);
      varmex_getU32Attribute(target, attribute, status);
      const std::int32_t expected = status.code();
      inject(name, expected, [=](tStatusRecord* record) {
        varmex_getU32Attribute(target, attribute, record);
        return record->code == 0;
      });
    }
  }
};

TEST_F(tInjection, opening) {
  inject("open beside a session of the same files", 0, openSession);
  session_.reset();
  inject("open", 0, openSession);
  describe(kPxiSys, kPxieSys);
  inject("open with a warning", varmex_warningFailedSync, openSynchronized);
  for (std::uint32_t number : {1U, 2U, 3U}) {
    inject("chassis", number == 3 ? varmex_errorUnknownItem : 0, [=, this](tStatusRecord* status) {
      return tItem(varmex_openChassisByNumber(session_.get(), number, status)) != nullptr;
    });
  }
  const tItem owner = chassis(1);
  for (std::uint32_t number : {3U, 9U}) {
    inject("slot", number == 9 ? varmex_errorUnknownItem : 0, [&](tStatusRecord* status) {
      return tItem(varmex_openSlotByNumber(owner.get(), number, status)) != nullptr;
    });
  }
  for (std::uint32_t bus : {5U, 6U}) {
    const tDeviceAddress address{0, bus, 3, 0};
    inject("device", bus == 6 ? varmex_errorUnknownItem : 0, [&](tStatusRecord* status) {
      return tItem(varmex_openDeviceByAddr(session_.get(), &address, status)) != nullptr;
    });
  }
  inject("null", varmex_errorInvalidHandle, [](tStatusRecord* status) {
    return varmex_openChassisByNumber(nullptr, 1, status) != nullptr;
  });
}

TEST_F(tInjection, aConflictingDescription) {
  machine_.writePxiSys(
      "[System]\nChassisList=1\n[Chassis1]\nSlotList=2,3\n[Chassis1Slot2]\n"
      "PCIBusNumber=1\nPCIDeviceNumber=1\n[Chassis1Slot3]\nPCIBusNumber=1\n"
      "PCIDeviceNumber=1\n");
  inject("conflict", varmex_errorInformationConflict, openSession);
  machine_.writePxiSys("[System]\nChassisList=x\n");
  inject("bad list", varmex_errorInformationNotAvailable, openSession);
}

TEST_F(tInjection, attributes) {
  injectAttributes("session", session_.get(), 0, 5);
  const tItem owner = chassis(1);
  injectAttributes("chassis", owner.get(), 4096, 4104);
  const tItem place = slot(1, 3);
  injectAttributes("slot", place.get(), 8192, 8206);
  const tItem module = device(5, 3, 1);
  injectAttributes("device", module.get(), 12288, 12294);
  for (const tItem& bridge : items(session_, varmex_container_TriggerBridges)) {
    injectAttributes("bridge", bridge.get(), 16384, 16390);
  }
}

// Each query is that of a fresh item, which has found nothing yet.
TEST_F(tInjection, triggerManagers) {
  const auto library = [this](tStatusRecord* status) {
    const tItem item(varmex_openChassisByNumber(session_.get(), 1, status));
    return varmex_getStringAttribute(item.get(), varmex_str_ChassisTriggerManagerLibrary, status) !=
           nullptr;
  };
  const auto native = [this](tStatusRecord* status) {
    const tItem item(varmex_openChassisByNumber(session_.get(), 1, status));
    return varmex_getU32Attribute(item.get(), varmex_u32_IsTriggerManagerNative, status) == 1;
  };
  describe(kPxiSys, std::string(kPxieSys) + "[Chassis1]\nTriggerManager=A\\T\n");
  inject("no library", varmex_errorTriggerManagerLibraryNotFound, library);
  machine_.setRegistryText("SOFTWARE\\PXISA\\Services\\Trigger Managers\\A\\T", "Library",
                           "a library with a name of some length.dll");
  inject("library", 0, library);
  inject("native without a service library", 0, native);
  {
    const tInstalledServiceLibrary service("full");
    inject("native", 0, native);
    inject("synchronised open", 0, openSynchronized);
    service.tell("initialize -9 modeStatus -9");
    inject("native, failed", -9, native);
    inject("open, failed", varmex_warningFailedSync, openSynchronized);
  }
  const tInstalledServiceLibrary service("withoutmode");
  machine_.setRegistryValue("SOFTWARE\\Corvane\\COR-DUNMOR", "TriggerManagersNoForward", 7,
                            std::string("B\0A\\T\0\0", 7));
  // A failure on the way to the list must not pass for a list without the manager.
  inject("native by the list", 0, [this](tStatusRecord* status) {
    const tItem item(varmex_openChassisByNumber(session_.get(), 1, status));
    const bool isNative =
        varmex_getU32Attribute(item.get(), varmex_u32_IsTriggerManagerNative, status) != 0;
    return status->code == 0 && !isNative;
  });
}

// The first wait of a session sets its watch up, so each call has a session of its own.
TEST_F(tInjection, waiting) {
  std::vector<tItem> sessions;
  for (int n = 0; n < 400; ++n) sessions.emplace_back(varmex_openPXISession(0, status_));
  std::size_t next = 0;
  inject("wait", 0, [&](tStatusRecord* status) {
    return varmex_waitForSessionInvalidation(sessions.at(next++).get(), 0, status) ==
           varmex_waitTimedOut;
  });
  inject("cancel", 0, [&](tStatusRecord*) {
    varmex_cancelWaitForInvalidation(sessions.at(next++).get());
    return true;
  });
}

TEST_F(tInjection, containersAndCopies) {
  for (std::uint32_t kind : {varmex_container_Chassis, varmex_container_Slots,
                             varmex_container_TriggerBridges, varmex_container_Devices}) {
    inject("container", 0, [=, this](tStatusRecord* status) {
      return tContainer(varmex_getItemContainer(session_.get(), kind, status)) != nullptr;
    });
    const tContainer list = container(session_, kind);
    inject("container copy", 0, [&](tStatusRecord* status) {
      return tContainer(varmex_duplicateItemContainer(list.get(), status)) != nullptr;
    });
    inject("next", 0, [&](tStatusRecord* status) {
      varmex_ItemIterator position = 0;
      return tItem(varmex_ItemIterator_nextItem(list.get(), &position, status)) != nullptr;
    });
    for (const tItem& item : items(session_, kind)) {
      inject("copy", 0, [&](tStatusRecord* status) {
        return tItem(varmex_duplicate(item.get(), status)) != nullptr;
      });
      const bool isChassis = kind == varmex_container_Chassis;
      inject("containing item", isChassis ? varmex_errorInvalidParameter : 0,
             [&](tStatusRecord* status) {
               return tItem(varmex_openContainingItem(item.get(), 1, status)) != nullptr;
             });
    }
  }
  inject("no container", varmex_errorAttributeNotApplicable, [this](tStatusRecord* status) {
    return varmex_getItemContainer(session_.get(), 7, status) != nullptr;
  });
}

class tRoutingInjection : public tInjection {
 protected:
  void SetUp() override {
    describe("", kRoutingDescription);
    open_ = newDevice();
    routing_.reset(telmar_ra_varmex_createSession(open_.c_str(), std::realloc, status_));
  }
  // Devices live as long as the process.
  static std::string newDevice() {
    static int count = 0;
    return "5.0.0:7 " + std::to_string(count++);
  }
  // `call` answers nothing but its status.
  void injectRouting(const char* name, const std::function<void(tStatusRecord*)>& call) {
    inject(name, 0, [&](tStatusRecord* status) { return call(status), status->code == 0; });
  }

  std::string open_;
  tRoutingSession routing_;
};

TEST_F(tRoutingInjection, opening) {
  injectRouting("create", [](tStatusRecord* status) {
    const std::string name = newDevice();
    tRoutingSession(telmar_ra_varmex_createSession(name.c_str(), std::realloc, status));
  });
  injectRouting("create again", [this](tStatusRecord* status) {
    tRoutingSession(telmar_ra_varmex_createSession(open_.c_str(), std::realloc, status));
  });
  injectRouting("terminals", [this](tStatusRecord* status) {
    tIterator(telmar_ra_varmex_getAllTerminals(routing_.get(), status));
  });
}

TEST_F(tRoutingInjection, routes) {
  telmar_ra_Session* const session = routing_.get();
  const std::string seeds = seed("PXI_Trig5", "a token that no string object holds in place");
  const char* const destinations =
      R"(["PXI_Trig5","PXI_Trig5","PXI_Trig5","PXI_Trig5","PXI_Trig5","PXI_Trig5"])";
  tText reply;
  injectRouting("calculate", [&](tStatusRecord* status) {
    telmar_ra_varmex_calculateRoute(session, seeds.c_str(), destinations, nullptr, &reply.text,
                                    status);
  });
  const std::uint32_t ticket = nlohmann::json::parse(reply.text)[0]["ticket"];
  for (const std::uint32_t reserved : {ticket, ticket + 1}) {
    injectRouting("reserve", [&](tStatusRecord* status) {
      telmar_ra_varmex_reserveRoute(session, reserved, nullptr, status);
    });
  }
  injectRouting("path", [&](tStatusRecord* status) {
    telmar_ra_varmex_getRouteTerminalPath(session, ticket, &reply.text, status);
  });
  injectRouting("constraints", [&](tStatusRecord* status) {
    telmar_ra_varmex_getHandledConstraints(session, &reply.text, status);
  });
  for (const std::uint32_t gone : {ticket, ticket + 1})
    telmar_ra_varmex_destroyRoute(session, gone);
  telmar_ra_varmex_calculateRoute(session, seed("PXI_Trig5", "b").c_str(), destinations, nullptr,
                                  &reply.text, status_);
  EXPECT_NE(std::string(reply.text), "[]") << "nothing is held by a call that failed";
}

}  // namespace

}  // namespace test
