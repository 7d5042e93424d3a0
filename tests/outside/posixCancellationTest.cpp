// Threads that are cancelled inside an exported function.

#include <pthread.h>

#include "tests/support/model.h"
#include "tests/support/routing.h"

namespace test {

namespace {

using tCancellation = tModel;

constexpr const char* kCancelledDescription =
    "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=2\n"
    "TriggerManager=T\nTriggerBusList=\"\"\n"
    "[Chassis1Slot2]\nSlotType=PXIeHybridSlot\nAddressInfo=PXI0::5-0.0::INSTR\n";

// Runs `work` in a thread and answers whether that was cancelled.
bool endsCancelled(const std::function<void()>& work) {
  const auto body = [](void* argument) -> void* {
    (*static_cast<const std::function<void()>*>(argument))();
    return nullptr;
  };
  pthread_t thread;
  void* const argument = const_cast<std::function<void()>*>(&work);
  if (pthread_create(&thread, nullptr, body, argument) != 0) return false;
  void* result = nullptr;
  pthread_join(thread, &result);
  return result == PTHREAD_CANCELED;
}

TEST_F(tCancellation, comesBehindTheFunction) {
  machine_.writeConfiguration();
  machine_.setRegistryText("SOFTWARE\\PXISA\\Services\\Trigger Managers\\T", "Library", "t.so");
  describe("", kCancelledDescription);
  const tItem rack = chassis(1);
  const tItem second = slot(1, 2);
  const auto expectWhole = [this](const char* name, const std::function<void()>& work) {
    bool isDone = false;
    EXPECT_TRUE(endsCancelled([&] {
      // Whatever minds it from here on ends the thread.
      pthread_cancel(pthread_self());
      work();
      isDone = true;
      pthread_testcancel();
    })) << name;
    EXPECT_TRUE(isDone) << name;
    EXPECT_EQ(takeFailure(), "") << name;
  };
  tItem opened;
  expectWhole("open", [&] { opened.reset(varmex_openPXISession(0, status_)); });
  expectWhole("number", [&] { EXPECT_EQ(number(opened, varmex_u32_SessionIsCurrent), 1U); });
  expectWhole("cancel", [&] { varmex_cancelWaitForInvalidation(opened.get()); });
  expectWhole("close", [&] { opened.reset(); });
  expectWhole("synchronize", [] {
    tStatus warned;
    EXPECT_TRUE(tItem(varmex_openPXISession(1, warned)));
    EXPECT_EQ(warned.code(), varmex_warningFailedSync) << warned.text();
  });
  expectWhole("registry",
              [&] { EXPECT_EQ(text(rack, varmex_str_ChassisTriggerManagerLibrary), "t.so"); });
  expectWhole("walk", [&] {
    text(second, varmex_str_TriggerBusStableName);
    varmex_releaseStatus(status_);
  });
  expectWhole("list", [&] { EXPECT_EQ(items(session_, varmex_container_Devices).size(), 1U); });
  tRoutingSession routing;
  expectWhole("routing session", [&] { routing = openRouting("5.0.0:0", status_); });
  ASSERT_TRUE(routing);
  expectWhole("terminals", [&] {
    const tIterator terminals(telmar_ra_varmex_getAllTerminals(routing.get(), status_));
    while (!telmar_ra_varmex_TerminalIterator_isEnd(terminals.get())) {
      telmar_ra_varmex_TerminalIterator_next(terminals.get(), status_);
    }
  });
  expectWhole("its end", [&] { routing.reset(); });
}

// Of a thread that asked to be cancelled at any point. Some systems leave out what such a thread
// answers to the one that joins it.
TEST_F(tCancellation, endsAnAsynchronousThreadWithTheFunction) {
  const auto wait = varmex_waitForSessionInvalidation;
  for (const auto function : {varmex_getU32Attribute, wait}) {
    static bool isWhole;
    isWhole = false;
    bool isBehind = false;
    bool isUnwound = false;
    const auto note = [](bool* flag) { *flag = true; };
    endsCancelled([&] {
      const std::unique_ptr<bool, decltype(note)> unwinding(&isUnwound, note);
      pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
      tStatusRecord record{0, 0, nullptr, nullptr};
      record.reallocate = [](tStatusRecord*, std::uint32_t) {
        pthread_cancel(pthread_self());
        isWhole = true;
        return false;
      };
      function(nullptr, 0, &record);
      isBehind = true;
    });
    EXPECT_TRUE(isWhole);
    EXPECT_TRUE(isUnwound);
    EXPECT_FALSE(isBehind);
  }
}

}  // namespace

}  // namespace test
