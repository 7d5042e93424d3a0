#include "tests/injection/scenarios.h"

#include "tests/support/routing.h"

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
    "[Chassis2Slot2]\nPCISlotPath=a,b\nFunctionList=1,2\n"
    "[Chassis2Slot2Function1]\nPCIBusNumber=255\nPCIDeviceNumber=31\n"
    "[Chassis2Slot2Function2]\nPCIBusNumber=300\nPCIDeviceNumber=1\n";

std::string line(const std::string& what, const std::string& answer, bool isNull, tStatus& status) {
  const std::int32_t code = status.code();
  EXPECT_TRUE(isWellFormed(status.text())) << status.text();
  EXPECT_TRUE(isNull || code >= 0) << what << ": a result beside a failure";
  varmex_releaseStatus(status);
  return what + (code == 0 ? '=' + answer : '!' + std::to_string(code)) + '\n';
}

std::string attributes(varmex_Item* item, std::uint32_t first, std::uint32_t last) {
  std::string answer;
  for (std::uint32_t attribute = first; attribute <= last; ++attribute) {
    tStatus status;
    const std::string what = std::to_string(attribute);
    const char* const text = call(varmex_getStringAttribute, item, attribute, status);
    answer += line(what + 's', text ? text : "", !text, status);
    const std::uint32_t number = call(varmex_getU32Attribute, item, attribute, status);
    answer += line(what + 'u', std::to_string(number), number == 0, status);
  }
  return answer;
}

}  // namespace

std::string walk(varmex_Item* session, std::uint32_t kind, tStatus& status) {
  constexpr std::uint32_t kMostAttributes = 15;  // of one class
  const tContainer original(call(varmex_getItemContainer, session, kind, status));
  const tContainer list(call(varmex_duplicateItemContainer, original.get(), status));
  std::string answer;
  varmex_ItemIterator position = call(varmex_ItemIterator_begin, list.get(), status);
  while (position != call(varmex_ItemIterator_end, list.get(), status) && status.code() == 0) {
    const tItem item(call(varmex_ItemIterator_nextItem, list.get(), &position, status));
    const tItem copy(call(varmex_duplicate, item.get(), status));
    if (status.code() != 0) break;
    const std::uint32_t first =
        4096 * varmex_getU32Attribute(copy.get(), varmex_u32_ItemType, nullptr);
    answer += attributes(copy.get(), first, first + kMostAttributes);
    tStatus own;
    const tItem owner(call(varmex_openContainingItem, item.get(), varmex_itemType_Chassis, own));
    answer += line("owner", "", !owner, own);
  }
  return answer;
}

std::string openAll(std::uint32_t flags, tStatus& status) {
  const tItem session(call(varmex_openPXISession, flags, status));
  if (!session) return "";
  const bool isWarned = status.code() == varmex_warningFailedSync;
  EXPECT_TRUE(status.code() == 0 || (flags != 0 && isWarned)) << status.text();
  varmex_releaseStatus(status);
  std::string answer;
  for (const std::uint32_t number : {3U, 2U, 1U}) {
    const tItem chassis(call(varmex_openChassisByNumber, session.get(), number, status));
    answer += line("chassis", "", !chassis, status);
    for (const std::uint32_t slotNumber : {9U, 3U}) {
      const tItem slot(call(varmex_openSlotByNumber, chassis.get(), slotNumber, status));
      answer += line("slot", "", !slot, status);
    }
  }
  for (const std::uint32_t bus : {5U, 99U}) {
    const tDeviceAddress address{0, bus, 0, 0};
    const tItem device(call(varmex_openDeviceByAddr, session.get(), &address, status));
    answer += line("device", "", !device, status);
  }
  return answer;
}

std::string walkAll(tStatus& status) {
  const tItem session(call(varmex_openPXISession, 0, status));
  std::string answer = attributes(session.get(), 0, 5);
  for (const std::uint32_t kind : kKinds) answer += walk(session.get(), kind, status);
  return answer;
}

std::string askTriggerManager(tStatus& status) {
  const tItem session(call(varmex_openPXISession, 0, status));
  const tItem chassis(call(varmex_openChassisByNumber, session.get(), 1, status));
  if (!chassis) return "";
  tStatus own;
  const std::uint32_t isNative =
      call(varmex_getU32Attribute, chassis.get(), varmex_u32_IsTriggerManagerNative, own);
  const std::string answer = line("native", std::to_string(isNative), isNative == 0, own);
  const char* const library =
      call(varmex_getStringAttribute, chassis.get(), varmex_str_ChassisTriggerManagerLibrary, own);
  return answer + line("library", library ? library : "", !library, own);
}

std::string routeAll(tStatus& status) {
  static int count = 0;
  const std::string name = "5.0.0:7 " + std::to_string(count++);
  const tRoutingSession session(
      call(telmar_ra_varmex_createSession, name.c_str(), std::realloc, status));
  const tRoutingSession other(
      call(telmar_ra_varmex_createSession, name.c_str(), std::realloc, status));
  if (!other) return "";
  const tIterator terminals(call(telmar_ra_varmex_getAllTerminals, session.get(), status));
  const std::string seeds = seed("PXI_Trig5", "a token that no string object holds in place");
  const char* const destinations =
      R"(["PXI_Trig5","PXI_Trig5","PXI_Trig5","PXI_Trig5","PXI_Trig5","PXI_Trig5"])";
  tText reply;
  call(telmar_ra_varmex_calculateRoute, session.get(), seeds.c_str(), destinations, nullptr,
       &reply.text, status);
  if (status.code() != 0) return "";
  std::string answer = std::string("routes=") + reply.text + '\n';
  for (const std::uint32_t ticket : {1U, 2U}) {
    call(telmar_ra_varmex_reserveRoute, session.get(), ticket, nullptr, status);
    answer += line("reserve", "", true, status);
  }
  call(telmar_ra_varmex_getRouteTerminalPath, session.get(), 1, &reply.text, status);
  answer += line("path", reply.text, true, status);
  call(telmar_ra_varmex_getHandledConstraints, session.get(), &reply.text, status);
  answer += line("constraints", reply.text, true, status);
  for (const std::uint32_t ticket : {1U, 2U})
    call(telmar_ra_varmex_destroyRoute, session.get(), ticket);
  // Nothing is held any more, not even by what failed.
  call(telmar_ra_varmex_calculateRoute, other.get(), seed("PXI_Trig5", "b").c_str(), destinations,
       nullptr, &reply.text, status);
  return answer + line("free", reply.text, true, status);
}

void tScenarios::SetUp() {
  machine_.writeConfiguration();
  machine_.setRegistryText("SOFTWARE\\PXISA\\CurrentVersion", "ChassisDescriptionFilePath", "d");
  machine_.setRegistryText("SOFTWARE\\PXISA\\Services\\Trigger Managers\\A\\T", "Library",
                           "a library with a name of some length.dll");
  describe(kPxiSys, kRoutingDescription + std::string("Joined Line1=a\nJoined Line2=b\n"
                                                      "[Chassis1]\nTriggerManager=A\\T\n"
                                                      "[Chassis1Slot2]\nVendor=W\n"));
  ASSERT_TRUE(session_) << status_.text();
}

void tScenarios::inject(const tScenario& scenario, const std::function<void(long)>& arm,
                        const std::function<bool()>& disarm, const tJudge& isGood,
                        std::int32_t expected) {
  tStatus first;
  const std::string undisturbed = scenario(first);
  EXPECT_EQ(std::min(first.code(), 0), expected) << first.text();
  for (long n = 1; !HasFailure(); ++n) {
    tStatus status;
    arm(n);
    const std::string answer = scenario(status);
    EXPECT_TRUE(isWellFormed(status.text())) << status.text();
    if (!disarm()) {
      EXPECT_EQ(answer, undisturbed);
      return;
    }
    EXPECT_TRUE(isGood(answer, undisturbed, status)) << n << ": " << status.text() << '\n'
                                                     << answer;
  }
}

}  // namespace test
