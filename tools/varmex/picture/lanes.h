#ifndef TOOLS_VARMEX_PICTURE_LANES_H
#define TOOLS_VARMEX_PICTURE_LANES_H

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace tool {

// Lanes below each other, in which nothing overlaps.
class tLanes {
 public:
  bool isFree(std::size_t lane, int from, int to) const;
  void take(std::size_t lane, int from, int to);
  std::size_t firstFree(int from, int to) const;
  int count() const { return static_cast<int>(lanes_.size()); }

 private:
  std::vector<std::vector<std::pair<int, int>>> lanes_;
};

// A bar of a trigger bus.
struct tBarPlace {
  int left;
  int right;
  int bottom;
};

// An arrow that leaves one bar downwards, runs along a lane and comes up at another bar, or one
// that has nothing at its left end.
struct tArrowPlace {
  int from;
  int to;
  int lane;
};

// Places for arrows such that none hides another.
class tArrowLanes {
 public:
  // None when the bars are not beside each other or when there is no more room under one.
  std::optional<tArrowPlace> place(const tBarPlace& source, const tBarPlace& destination);
  // With one end alone, at a bar; none when there is no more room under that.
  std::optional<tArrowPlace> placeLoose(const tBarPlace& bar);
  int count() const { return lanes_.count(); }

 private:
  bool isFree(const tArrowPlace& place) const;
  template <class Candidate>
  std::optional<tArrowPlace> takeFirst(Candidate candidate);

  tLanes lanes_;
  std::vector<int> ends_;
};

}  // namespace tool

#endif
