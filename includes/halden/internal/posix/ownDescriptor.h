#ifndef HALDEN_INTERNAL_POSIX_OWNDESCRIPTOR_H
#define HALDEN_INTERNAL_POSIX_OWNDESCRIPTOR_H

#include <sys/types.h>

namespace halden {

// A descriptor that stays open between the caller's calls. The host may close it behind our back,
// as programs do that close everything, and a file of its own may get the number: so it is known
// again by what it stands for and by a mark, and is neither used nor closed when it is another's.
class tOwnDescriptor {
 public:
  tOwnDescriptor() = default;
  tOwnDescriptor(const tOwnDescriptor&) = delete;
  tOwnDescriptor& operator=(const tOwnDescriptor&) = delete;
  ~tOwnDescriptor() { release(); }

  // Notes what a system call has just answered, so that the child of a fork closes it from then on.
  // For a number that can't be adopted at once, as another one comes first.
  void expect(int number) { number_ = number; }

  // Takes over what a system call answered; false with its reason left when that was none.
  bool adopt(int number);

  bool isOurs() const;
  int number() const { return number_; }

  // Closes it, if it is still ours. Safe in the child of a fork, also of one amid `adopt`.
  void release();

 private:
  bool isOurs(int number) const;
  void moveUp(int turn);

  int number_ = -1;
  int former_ = -1;  // the number that it is moved away from
  dev_t device_ = 0;
  ino_t inode_ = 0;
  int mark_ = 0;  // none as long as the number is as the system has just answered it
};

}  // namespace halden

#endif
