#ifndef TOOLS_VARMEX_TEXT_STREAMS_H
#define TOOLS_VARMEX_TEXT_STREAMS_H

#include <memory>

namespace tool {

// While it lives, the standard streams take UTF-8: a terminal shows its characters, whatever else
// they lead to gets the bytes as they are. A pair: one source for each platform.
class tStreams {
 public:
  tStreams();
  tStreams(const tStreams&) = delete;
  tStreams& operator=(const tStreams&) = delete;
  ~tStreams();

 private:
  struct tState;
  std::unique_ptr<tState> state_;
};

}  // namespace tool

#endif
