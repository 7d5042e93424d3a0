#ifndef SOURCE_VARMEX_SYSTEMCHANGEOBSERVER_H
#define SOURCE_VARMEX_SYSTEMCHANGEOBSERVER_H

#include <boost/noncopyable.hpp>
#include <cstdint>

namespace varmex {

// Sleeps until the description may have changed. A waiter arms first, then looks at the files, and
// then waits beyond the changes that arming answered: no change in between escapes it, whichever
// other waiter the system told of it.
class SystemChangeObserver : private boost::noncopyable {
 public:
  virtual ~SystemChangeObserver() = default;

  // Arms and waits beyond that.
  virtual bool wait(std::uint32_t timeoutMs) = 0;

  // Wakes all waiters, also those that come later.
  virtual void cancel() = 0;

  // Makes sure that everything on which the files hang by now is watched, and answers the number of
  // changes seen ahead of that. Failures are exceptions.
  virtual std::uint64_t arm() = 0;

  // True after a change or a cancel, false when the time ran out; other failures are exceptions.
  // 0xFFFFFFFF waits without limit.
  virtual bool waitBeyond(std::uint64_t seen, std::uint32_t timeoutMs) = 0;
};

}  // namespace varmex

#endif
