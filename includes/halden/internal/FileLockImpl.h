#ifndef HALDEN_INTERNAL_FILELOCKIMPL_H
#define HALDEN_INTERNAL_FILELOCKIMPL_H

#include <cstdio>

#include "halden/internal/nativeFileLock.h"

namespace halden {

// A shared lock on the whole of an open file, which stays the caller's and must outlive this
// object. It never waits. Failures are raised; one thread uses it.
class FileLockImpl {
 public:
  explicit FileLockImpl(std::FILE* file);
  explicit FileLockImpl(int descriptor);  // of a file that is open without a stream
  FileLockImpl(const FileLockImpl&) = delete;
  FileLockImpl& operator=(const FileLockImpl&) = delete;

  // False while somebody else holds the file exclusively.
  bool tryLockShared();

  // An unlock that fails is the same as one that worked.
  void unlock();

 private:
  tNativeFileLock lock_;
};

}  // namespace halden

#endif
