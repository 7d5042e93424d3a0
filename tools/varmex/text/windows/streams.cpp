#include "tools/varmex/text/streams.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <iostream>
#include <streambuf>
#include <string>

#include "tools/varmex/text/windows/unicode.h"

namespace tool {

namespace {

// Writes to a console in UTF-16, so that its code page does not matter.
class tConsoleBuffer : public std::streambuf {
 public:
  explicit tConsoleBuffer(HANDLE console) : console_(console) {}
  ~tConsoleBuffer() override { tConsoleBuffer::sync(); }

 protected:
  int_type overflow(int_type byte) override {
    if (traits_type::eq_int_type(byte, traits_type::eof())) return traits_type::not_eof(byte);
    const char one = traits_type::to_char_type(byte);
    return xsputn(&one, 1) == 1 ? byte : traits_type::eof();
  }

  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    waiting_.append(bytes, static_cast<std::size_t>(count));
    return waiting_.size() < kEnough || sync() == 0 ? count : 0;
  }

  // A character whose last bytes are still to come waits for them.
  int sync() override {
    const std::size_t end = wholeCharacters();
    const std::wstring text = wideOf(std::string_view(waiting_).substr(0, end));
    waiting_.erase(0, end);
    for (std::size_t at = 0; at < text.size();) {
      DWORD written = 0;
      const auto count = static_cast<DWORD>(text.size() - at < kMost ? text.size() - at : kMost);
      if (!WriteConsoleW(console_, text.data() + at, count, &written, nullptr)) return -1;
      if (written == 0) return -1;
      at += written;
    }
    return 0;
  }

 private:
  static constexpr std::size_t kEnough = 1 << 14;
  static constexpr std::size_t kMost = 1 << 14;  // that a console takes at once

  std::size_t wholeCharacters() const {
    std::size_t lead = waiting_.size();
    for (int tail = 0; tail < 4 && lead > 0; ++tail) {
      const auto byte = static_cast<unsigned char>(waiting_[--lead]);
      if ((byte & 0xC0) == 0x80) continue;
      const int size = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
      return tail + 1 < size ? lead : waiting_.size();
    }
    return waiting_.size();
  }

  HANDLE console_;
  std::string waiting_;
};

// One of the streams, as long as it is not as it was.
class tStream {
 public:
  tStream(std::ostream& stream, DWORD handle, int descriptor)
      : stream_(stream), console_(GetStdHandle(handle)), buffer_(console_) {
    if (!GetConsoleMode(console_, &mode_)) {
      // Lines end as they do on other systems, so that what is redirected is the same there.
      _setmode(descriptor, _O_BINARY);
      return;
    }
    SetConsoleMode(console_, mode_ | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    earlier_ = stream_.rdbuf(&buffer_);
  }
  tStream(const tStream&) = delete;
  tStream& operator=(const tStream&) = delete;
  ~tStream() {
    if (!earlier_) return;
    stream_.flush();
    stream_.rdbuf(earlier_);
    SetConsoleMode(console_, mode_);
  }

 private:
  std::ostream& stream_;
  HANDLE console_;
  tConsoleBuffer buffer_;
  DWORD mode_ = 0;
  std::streambuf* earlier_ = nullptr;
};

}  // namespace

struct tStreams::tState {
  tStream output{std::cout, STD_OUTPUT_HANDLE, _fileno(stdout)};
  tStream errors{std::cerr, STD_ERROR_HANDLE, _fileno(stderr)};
};

tStreams::tStreams() : state_(std::make_unique<tState>()) {}
tStreams::~tStreams() = default;

}  // namespace tool
