#ifndef OSTREL_QUARKS_ONCEMADE_H
#define OSTREL_QUARKS_ONCEMADE_H

#include <atomic>
#include <memory>
#include <utility>

namespace varmex::inline nOSTRELS100 {

// A value that is made at the first need and never changes. Threads that need it at once may each
// make it; one of them is kept. There is no lock. What the making throws goes to who asked, and the
// next need makes it again.
template <class T>
class tOnceMade {
 public:
  tOnceMade() = default;
  tOnceMade(const tOnceMade&) = delete;
  tOnceMade& operator=(const tOnceMade&) = delete;
  ~tOnceMade() { delete value_.load(std::memory_order_relaxed); }

  // Null until it is made.
  const T* find() const { return value_.load(std::memory_order_acquire); }

  template <class Make>
  const T& get(Make make) const {
    if (const T* const value = find()) return *value;
    std::unique_ptr<const T> made(new T(make()));
    const T* earlier = nullptr;
    if (!value_.compare_exchange_strong(earlier, made.get(), std::memory_order_acq_rel,
                                        std::memory_order_acquire)) {
      return *earlier;
    }
    return *made.release();
  }

 private:
  mutable std::atomic<const T*> value_{nullptr};
};

// Values that only come: none goes or moves before the list does. Each content stands once, or, if
// threads add it at the same time, once for each. There is no lock.
template <class T>
class tGrowingList {
 public:
  tGrowingList() = default;
  tGrowingList(const tGrowingList&) = delete;
  tGrowingList& operator=(const tGrowingList&) = delete;
  ~tGrowingList() {
    while (const tEntry* const entry = first_.load(std::memory_order_relaxed)) {
      first_.store(entry->next, std::memory_order_relaxed);
      delete entry;
    }
  }

  // The entry that is equal to the value.
  const T& add(T value) const {
    tEntry* const first = first_.load(std::memory_order_acquire);
    for (const tEntry* known = first; known; known = known->next) {
      if (known->value == value) return known->value;
    }
    tEntry* const added = new tEntry{std::move(value), first};
    while (!first_.compare_exchange_weak(added->next, added, std::memory_order_acq_rel,
                                         std::memory_order_acquire)) {
    }
    return added->value;
  }

 private:
  struct tEntry {
    T value;
    tEntry* next;
  };

  mutable std::atomic<tEntry*> first_{nullptr};
};

}  // namespace varmex::inline nOSTRELS100

#endif
