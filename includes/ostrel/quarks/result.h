#ifndef OSTREL_QUARKS_RESULT_H
#define OSTREL_QUARKS_RESULT_H

#include <memory>
#include <type_traits>
#include <utility>

#include "ostrel/quarks/refusal.h"

namespace varmex::inline nOSTRELS100 {

// The value of a routine that has none.
struct tNothing {};
inline constexpr tNothing kDone;

// A value or a refusal. Only one that holds has a value, only another has a refusal.
template <class T = tNothing>
class [[nodiscard]] tResult {
 public:
  using tValue = T;

  tResult(T value) : holds_(true) { std::construct_at(&value_, std::move(value)); }
  tResult(const tRefusal& refusal) : holds_(false) { std::construct_at(&refusal_, refusal); }

  // A value that converts, as a pointer to a base of what it points to.
  template <class From>
  requires(!std::is_same_v<std::remove_cvref_t<From>, tResult> &&
           !std::is_same_v<std::remove_cvref_t<From>, T> && std::is_convertible_v<From, T>)
      tResult(From&& value)
      : holds_(true) {
    std::construct_at(&value_, std::forward<From>(value));
  }

  tResult(tResult&& other) noexcept : holds_(other.holds_) {
    if (holds_) {
      std::construct_at(&value_, std::move(other.value_));
    } else {
      std::construct_at(&refusal_, other.refusal_);
    }
  }
  tResult& operator=(tResult&&) = delete;
  ~tResult() {
    if (holds_) std::destroy_at(&value_);
  }

  explicit operator bool() const { return holds_; }
  T& operator*() { return value_; }
  const T& operator*() const { return value_; }
  T* operator->() { return &value_; }
  const T* operator->() const { return &value_; }
  const tRefusal& refusal() const { return refusal_; }

  // What `next` makes of the value; a refusal goes on as it is. `next` answers a tResult.
  template <class Next>
  auto then(Next next) && -> decltype(next(std::declval<T&&>())) {
    if (!holds_) return refusal_;
    return next(std::move(value_));
  }

 private:
  bool holds_;
  union {
    T value_;
    tRefusal refusal_;
  };
};

}  // namespace varmex::inline nOSTRELS100

#endif
