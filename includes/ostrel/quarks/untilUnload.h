#ifndef OSTREL_QUARKS_UNTILUNLOAD_H
#define OSTREL_QUARKS_UNTILUNLOAD_H

#include <memory>
#include <utility>

namespace varmex::inline nOSTRELS100 {

// Whether the library is being unloaded from a process that goes on. In one that ends, threads run
// or have been ended amid a change.
bool isLastUse();

// Whoever uses such data says so ahead of it, unless it is reached through tUntilUnload itself. The
// system ends the libraries that a program is linked to just as it unloads them: what tells the one
// from the other is noted at the first use, which must be behind the start of the program: what the
// constructors of its libraries use comes too early.
void expectExit();

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

  Value* operator->() {
    expectExit();
    return &value_;
  }

 private:
  union {
    Value value_;
  };
};

}  // namespace varmex::inline nOSTRELS100

#endif
