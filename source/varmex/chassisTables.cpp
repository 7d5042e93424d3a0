#include "source/varmex/chassisTables.h"

#include <bit>

namespace varmex {

tTablesByChassis::tTablesByChassis(std::size_t expected) : buckets_(std::bit_ceil(expected + 1)) {}

tTablesByChassis::~tTablesByChassis() {
  for (const std::atomic<tNode*>& bucket : buckets_) {
    for (tNode* node = bucket.load(std::memory_order_relaxed); node;) {
      const std::unique_ptr<tNode> owned(node);
      node = node->next;
    }
  }
}

std::atomic<tTablesByChassis::tNode*>& tTablesByChassis::bucketOf(std::uint32_t chassis) const {
  return buckets_[hashSeed_.scramble(chassis) & (buckets_.size() - 1)];
}

const tChassisTables& tTablesByChassis::of(std::uint32_t chassis) const {
  std::atomic<tNode*>& bucket = bucketOf(chassis);
  tNode* first = bucket.load(std::memory_order_acquire);
  tNode* end = nullptr;  // nodes from here on have been looked at
  std::unique_ptr<tNode> made;
  while (true) {
    for (tNode* node = first; node != end; node = node->next) {
      if (node->chassis == chassis) return node->tables;
    }
    if (!made) made.reset(new tNode{chassis, {}, nullptr});
    made->next = end = first;
    if (bucket.compare_exchange_weak(first, made.get(), std::memory_order_acq_rel,
                                     std::memory_order_acquire)) {
      return made.release()->tables;
    }
  }
}

}  // namespace varmex
