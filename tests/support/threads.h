#ifndef TESTS_SUPPORT_THREADS_H
#define TESTS_SUPPORT_THREADS_H

#include <thread>
#include <vector>

namespace test {

// Runs `work` in that many threads at once, each with its number.
template <class Work>
void runInThreads(int count, const Work& work) {
  std::vector<std::jthread> threads;
  for (int n = 0; n < count; ++n) threads.emplace_back(work, n);
}

}  // namespace test

#endif
