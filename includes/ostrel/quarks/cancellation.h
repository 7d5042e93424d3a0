#ifndef OSTREL_QUARKS_CANCELLATION_H
#define OSTREL_QUARKS_CANCELLATION_H

namespace varmex::inline nOSTRELS100 {

// Puts off the cancellation of the calling thread, where the platform has such, until the scope
// ends: what runs within is never left halfway. May be nested.
class tCancellationOff {
 public:
  tCancellationOff();
  tCancellationOff(const tCancellationOff&) = delete;
  tCancellationOff& operator=(const tCancellationOff&) = delete;
  // A thread that may be cancelled at any point ends in here.
  ~tCancellationOff() noexcept(false);

  // Within, the thread can be cancelled as it could be before the outer scope: for the sleeps of a
  // wait. Everything up to the caller must be unwound well then, and nothing of it be noexcept.
  class tLifted {
   public:
    explicit tLifted(const tCancellationOff& outer);
    tLifted(const tLifted&) = delete;
    tLifted& operator=(const tLifted&) = delete;
    ~tLifted();
  };

 private:
  int before_ = 0;
};

// Lets a thread that may be cancelled at any point be so in the system's sleeps alone, until the
// scope ends.
class tCancellationInSleeps {
 public:
  tCancellationInSleeps();
  tCancellationInSleeps(const tCancellationInSleeps&) = delete;
  tCancellationInSleeps& operator=(const tCancellationInSleeps&) = delete;
  // As above.
  ~tCancellationInSleeps() noexcept(false);

 private:
  int before_ = 0;
};

}  // namespace varmex::inline nOSTRELS100

#endif
