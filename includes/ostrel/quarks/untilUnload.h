#ifndef OSTREL_QUARKS_UNTILUNLOAD_H
#define OSTREL_QUARKS_UNTILUNLOAD_H

#include <memory>
#include <utility>

namespace varmex::inline nOSTRELS100 {

// Whether the library is being unloaded from a process that goes on, or no thread is left to use
// it. Otherwise the process ends while its threads run.
bool isLastUse();

// Static data that threads may use until the process ends: they are destroyed when the library is
// unloaded, and left alone when the process ends.
template <class Value>
class tUntilUnload {
 public:
  template <class... Arguments>
  explicit tUntilUnload(Arguments&&... arguments) {
    std::construct_at(&value_, std::forward<Arguments>(arguments)...);
  }
  tUntilUnload(const tUntilUnload&) = delete;
  tUntilUnload& operator=(const tUntilUnload&) = delete;
  ~tUntilUnload() {
    if (isLastUse()) std::destroy_at(&value_);
  }

  Value& operator*() { return value_; }
  Value* operator->() { return &value_; }

 private:
  union {
    Value value_;
  };
};

}  // namespace varmex::inline nOSTRELS100

#endif
