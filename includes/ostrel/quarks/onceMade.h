#ifndef OSTREL_QUARKS_ONCEMADE_H
#define OSTREL_QUARKS_ONCEMADE_H

#include <atomic>
#include <memory>

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

  template <class Make>
  const T& get(Make make) const {
    if (const T* const value = value_.load(std::memory_order_acquire)) return *value;
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

}  // namespace varmex::inline nOSTRELS100

#endif
