#ifndef HALDEN_INTERNAL_NATIVEFILELOCK_H
#define HALDEN_INTERNAL_NATIVEFILELOCK_H

#include <memory>

namespace halden {

enum class tLockAnswer { obtained, heldElsewhere, failed };

// The platform's shared lock on a whole open file, which stays its owner's. What fails leaves its
// reason with the system.
class tNativeFileLock {
 public:
  tNativeFileLock();
  ~tNativeFileLock();

  // To the file behind the descriptor, before anything else. False when that fails.
  bool attach(int descriptor);
  tLockAnswer tryLockShared();
  bool unlock();

 private:
  struct tState;
  std::unique_ptr<tState> state_;
};

}  // namespace halden

#endif
