// What the compiler's runtime, which is linked into the DLL, asks of POSIX threads, and nothing
// more. It stands in front of the thread library of the compiler, which takes four handles per
// thread and one index of thread-local storage per loading of the DLL and never gives them back: a
// host that loads and frees the DLL often would run out of them. Here a lock is a word, and what is
// taken is given back when the DLL is freed. A function that the runtime comes to need beyond these
// shows as a second definition of those when the DLL is linked.

#include <pthread.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <iterator>

#include "ostrel/quarks/untilUnload.h"

// Frees the memory that the C++ runtime sets aside for exceptions; only its sources declare it.
namespace __gnu_cxx {
void __freeres();
}

namespace {

// A word that the headers initialise to -1 becomes the system's lock or condition, which begin as 0
// and never are -1.
template <class Native>
Native* asNative(std::intptr_t* word) {
  static_assert(sizeof(Native) == sizeof *word);
  std::intptr_t untouched = -1;
  std::atomic_ref<std::intptr_t>(*word).compare_exchange_strong(untouched, 0);
  return reinterpret_cast<Native*>(word);
}

SRWLOCK* lockOf(pthread_mutex_t* mutex) { return asNative<SRWLOCK>(mutex); }
CONDITION_VARIABLE* conditionOf(pthread_cond_t* condition) {
  return asNative<CONDITION_VARIABLE>(condition);
}

constexpr long kOnceRunning = 1;
constexpr long kOnceDone = 2;
SRWLOCK onceLock = SRWLOCK_INIT;
CONDITION_VARIABLE onceTurned = CONDITION_VARIABLE_INIT;

std::uint64_t inMilliseconds(const timespec& time) {
  return static_cast<std::uint64_t>(time.tv_sec) * 1000 +
         static_cast<std::uint64_t>(time.tv_nsec + 999'999) / 1'000'000;
}

// Keys of thread-local values. The system hands out fibre-local storage so that its values are
// destroyed at the end of their thread and, those of all threads, when it is given back.
class tKeys {
 public:
  ~tKeys() {
    if (!varmex::isLastUse()) return;
    for (std::size_t i = 0; i < count_; ++i) FlsFree(keys_[i]);
    __gnu_cxx::__freeres();
  }

  int add(pthread_key_t* key, void (*destroy)(void*)) {
    const DWORD index = FlsAlloc(destroy);
    if (index == FLS_OUT_OF_INDEXES) return EAGAIN;
    const std::size_t place = count_++;
    if (place >= std::size(keys_)) {
      --count_;
      FlsFree(index);
      return EAGAIN;
    }
    keys_[place] = index;
    *key = index;
    return 0;
  }

  int remove(pthread_key_t key) {
    std::replace(std::begin(keys_), std::end(keys_), DWORD{key}, DWORD{FLS_OUT_OF_INDEXES});
    return FlsFree(key) ? 0 : EINVAL;
  }

 private:
  DWORD keys_[8] = {};
  std::atomic<std::size_t> count_ = 0;
};

// The first that is made, so the last that is destroyed: nothing throws any more.
__attribute__((init_priority(101))) tKeys keys;

}  // namespace

extern "C" {

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t*) {
  *mutex = PTHREAD_MUTEX_INITIALIZER;
  return 0;
}

int pthread_mutex_destroy(pthread_mutex_t*) { return 0; }

int pthread_mutex_lock(pthread_mutex_t* mutex) {
  AcquireSRWLockExclusive(lockOf(mutex));
  return 0;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) {
  ReleaseSRWLockExclusive(lockOf(mutex));
  return 0;
}

int pthread_cond_destroy(pthread_cond_t*) { return 0; }

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
  SleepConditionVariableSRW(conditionOf(condition), lockOf(mutex), INFINITE, 0);
  return 0;
}

int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* end) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  const std::uint64_t endMs = inMilliseconds(*end);
  const std::uint64_t nowMs = inMilliseconds(now);
  const std::uint64_t left = endMs > nowMs ? endMs - nowMs : 0;
  const auto bounded = static_cast<DWORD>(std::min<std::uint64_t>(left, INFINITE - 1));
  const bool isWoken = SleepConditionVariableSRW(conditionOf(condition), lockOf(mutex), bounded, 0);
  return isWoken ? 0 : ETIMEDOUT;
}

int pthread_cond_signal(pthread_cond_t* condition) {
  WakeConditionVariable(conditionOf(condition));
  return 0;
}

int pthread_cond_broadcast(pthread_cond_t* condition) {
  WakeAllConditionVariable(conditionOf(condition));
  return 0;
}

int pthread_once(pthread_once_t* once, void (*work)()) {
  const std::atomic_ref<long> state(*once);
  if (state.load(std::memory_order_acquire) == kOnceDone) return 0;
  AcquireSRWLockExclusive(&onceLock);
  while (state.load() == kOnceRunning) {
    SleepConditionVariableSRW(&onceTurned, &onceLock, INFINITE, 0);
  }
  if (state.load() != kOnceDone) {
    state.store(kOnceRunning);
    ReleaseSRWLockExclusive(&onceLock);
    work();
    AcquireSRWLockExclusive(&onceLock);
    state.store(kOnceDone, std::memory_order_release);
    WakeAllConditionVariable(&onceTurned);
  }
  ReleaseSRWLockExclusive(&onceLock);
  return 0;
}

int pthread_key_create(pthread_key_t* key, void (*destroy)(void*)) {
  return keys.add(key, destroy);
}

int pthread_key_delete(pthread_key_t key) { return keys.remove(key); }

void* pthread_getspecific(pthread_key_t key) { return FlsGetValue(key); }

int pthread_setspecific(pthread_key_t key, const void* value) {
  return FlsSetValue(key, const_cast<void*>(value)) ? 0 : ENOMEM;
}

pthread_t pthread_self() { return GetCurrentThreadId(); }

int nanosleep(const timespec* time, timespec*) {
  Sleep(static_cast<DWORD>(std::min<std::uint64_t>(inMilliseconds(*time), INFINITE - 1)));
  return 0;
}

}  // extern "C"
