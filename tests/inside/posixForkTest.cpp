// What a child of a fork finds locked.

#include <semaphore>
#include <thread>

#include "ostrel/quarks/synchronization.h"
#include "pxiRoutingAdaptor/pxiRoutingAdaptorDevice.h"
#include "tests/support/posix/host.h"

namespace varmex::nCorPxiRoutingAdaptor {

namespace {

using test::inChild;

// Runs `work` in a child while another thread of the parent holds what `hold` takes.
template <class Hold>
void inChildAmid(Hold hold, const std::function<void()>& work) {
  std::binary_semaphore isHeld{0}, isDone{0};
  const std::jthread holder([&] {
    hold([&] {
      isHeld.release();
      isDone.acquire();
    });
  });
  isHeld.acquire();
  inChild(work);
  isDone.release();
}

TEST(CriticalSection, isTheChilds) {
  tFixedStatus status;
  tCriticalSection lock(status);
  const auto enterTwice = [&lock](auto within) {
    const tCriticalSection::tHeld held(lock);
    EXPECT_FALSE(tCriticalSection::tHeld(lock).wasAbandoned());
    within();
    return held.wasAbandoned();
  };
  inChildAmid([&](auto within) { EXPECT_FALSE(enterTwice(within)); },
              [&] {
                // A thread of the child may have the name of the one that is lost.
                bool wasAbandoned = false;
                std::thread([&] { wasAbandoned = enterTwice([] {}); }).join();
                EXPECT_TRUE(wasAbandoned);
                EXPECT_FALSE(enterTwice([] {}));
              });
  enterTwice([&] {
    inChild([&] { EXPECT_FALSE(enterTwice([] {})) << "the holder itself made the child"; });
  });
}

class tDevice : public pxiRoutingAdaptorDevice {
 public:
  void loadTerminals(const std::string&) override { add("PXI_Trig"); }
  void add(const std::string& busType) { addBusTerminals("bus", busType); }

  bool take(int session, const char* token) { return reserveTerminal(keyOf(session), token, 0); }
  void give(int session) { releaseTerminal(keyOf(session), 0); }

 private:
  // The device uses such a pointer as a key alone.
  static const pxiRoutingAdaptorSession* keyOf(int session) {
    static char keys[4];
    return reinterpret_cast<const pxiRoutingAdaptorSession*>(&keys[session]);
  }
};

TEST(RoutingDevice, hasThreeGroupsOfLines) {
  tDevice device, another;
  EXPECT_THROW(device.add("PXI_Other"), corerr::ExceptionBase);
  device.loadTerminals("");
  device.takeBusNames(another);
  EXPECT_STREQ(device.terminals().front().busName.c_str(), "bus") << "of other terminals";
}

TEST(RoutingDevice, isWholeInTheChild) {
  tDevice device;
  device.loadTerminals("");
  const auto expectWhole = [&device] {
    device.give(1);
    ASSERT_TRUE(device.take(2, "b"));
    EXPECT_FALSE(device.isAvailable(0, "c") || device.take(3, "c"));
    device.give(2);
    EXPECT_TRUE(device.take(3, "c"));
  };
  ASSERT_TRUE(device.take(1, "a"));
  inChildAmid(
      [&](auto within) {
        const tDevice::tOwnersLock held(device);
        within();
      },
      [&] {
        EXPECT_FALSE(device.take(2, "b")) << "what nobody was changing is as it was";
        expectWhole();
      });
  // The thread is lost in the middle of a change, sooner or later.
  const std::jthread busy([&](const std::stop_token& over) {
    const std::string token(100, 't');
    while (!over.stop_requested()) {
      device.give(1);
      device.take(1, token.c_str());
    }
  });
  for (int n = 0; n < 50; ++n) inChild(expectWhole);
}

}  // namespace

}  // namespace varmex::nCorPxiRoutingAdaptor
