#ifndef TESTS_INJECTION_ALLOCATION_H
#define TESTS_INJECTION_ALLOCATION_H

namespace test {

// Makes the n-th counted allocation from now on fail, once. Both operator new and malloc count, as
// far as the program's own objects call them.
void failAllocation(long n);

// As long as one lives allocations count.
class tCountedAllocations {
 public:
  tCountedAllocations();
  ~tCountedAllocations();
  tCountedAllocations(const tCountedAllocations&) = delete;
  tCountedAllocations& operator=(const tCountedAllocations&) = delete;
};

// Ends it; whether it came to the failure.
bool allocationFailed();

}  // namespace test

#endif
