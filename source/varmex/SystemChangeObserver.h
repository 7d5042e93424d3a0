#ifndef SOURCE_VARMEX_SYSTEMCHANGEOBSERVER_H
#define SOURCE_VARMEX_SYSTEMCHANGEOBSERVER_H

#include <boost/noncopyable.hpp>
#include <cstdint>

namespace varmex {

// Sleeps until the description may have changed. A waiter asks for the number of changes first,
// then looks at the files, and then waits beyond that number: no change in between escapes it,
// whichever other waiter the system told of it.
class SystemChangeObserver : private boost::noncopyable {
 public:
  virtual ~SystemChangeObserver() = default;

  // As waitBeyond the changes so far.
  virtual bool wait(std::uint32_t timeoutMs) = 0;

  // Wakes all waiters, also those that come later.
  virtual void cancel() = 0;

  virtual std::uint64_t changes() const = 0;

  // True after a change or a cancel, false when the time ran out; other failures are exceptions.
  // 0xFFFFFFFF waits without limit.
  virtual bool waitBeyond(std::uint64_t seen, std::uint32_t timeoutMs) = 0;
};

}  // namespace varmex

#endif
