#include "tools/varmex/picture/lanes.h"

#include <algorithm>
#include <cstdlib>

namespace tool {

namespace {

constexpr int kFirstInset = 30;
constexpr int kNextInset = 16;
constexpr int kLeastDistance = 8;
constexpr int kLooseLength = 84;

int insetOf(int lane) { return kFirstInset + lane * kNextInset; }

// A bar of one slot is narrow: its only place is in the first lane.
bool isTooFar(const tBarPlace& bar, int lane) { return insetOf(lane) > bar.right - bar.left - 8; }

// Near the ends of the bars that face each other, further inside in a lower lane, so that arrows
// between the same bars surround each other.
std::optional<tArrowPlace> placeInLane(const tBarPlace& source, const tBarPlace& destination,
                                       int lane) {
  const int inset = insetOf(lane);
  if (isTooFar(source, lane) || isTooFar(destination, lane)) return std::nullopt;
  if (source.right <= destination.left) {
    return tArrowPlace{source.right - inset, destination.left + inset, lane};
  }
  if (destination.right <= source.left) {
    return tArrowPlace{source.left + inset, destination.right - inset, lane};
  }
  return std::nullopt;
}

}  // namespace

bool tLanes::isFree(std::size_t lane, int from, int to) const {
  if (lane >= lanes_.size()) return true;
  return std::none_of(lanes_[lane].begin(), lanes_[lane].end(),
                      [&](const auto& other) { return from < other.second && other.first < to; });
}

void tLanes::take(std::size_t lane, int from, int to) {
  if (lane >= lanes_.size()) lanes_.resize(lane + 1);
  lanes_[lane].emplace_back(from, to);
}

std::size_t tLanes::firstFree(int from, int to) const {
  std::size_t lane = 0;
  while (!isFree(lane, from, to)) ++lane;
  return lane;
}

bool tArrowLanes::isFree(const tArrowPlace& place) const {
  const auto [left, right] = std::minmax(place.from, place.to);
  if (!lanes_.isFree(static_cast<std::size_t>(place.lane), left - kLeastDistance,
                     right + kLeastDistance)) {
    return false;
  }
  return std::none_of(ends_.begin(), ends_.end(), [&place](int end) {
    return std::abs(end - place.from) < kLeastDistance || std::abs(end - place.to) < kLeastDistance;
  });
}

template <class Candidate>
std::optional<tArrowPlace> tArrowLanes::takeFirst(Candidate candidate) {
  for (int lane = 0;; ++lane) {
    const std::optional<tArrowPlace> place = candidate(lane);
    if (!place) return std::nullopt;
    if (!isFree(*place)) continue;
    const auto [left, right] = std::minmax(place->from, place->to);
    lanes_.take(static_cast<std::size_t>(lane), left - kLeastDistance, right + kLeastDistance);
    ends_.insert(ends_.end(), {place->from, place->to});
    return place;
  }
}

std::optional<tArrowPlace> tArrowLanes::place(const tBarPlace& source,
                                              const tBarPlace& destination) {
  return takeFirst([&](int lane) { return placeInLane(source, destination, lane); });
}

std::optional<tArrowPlace> tArrowLanes::placeLoose(const tBarPlace& bar) {
  return takeFirst([&](int lane) -> std::optional<tArrowPlace> {
    if (isTooFar(bar, lane)) return std::nullopt;
    const int end = bar.left + insetOf(lane);
    return tArrowPlace{end - kLooseLength, end, lane};
  });
}

}  // namespace tool
