#include "corpxiTools/iniText.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "corpxiTools/iniLineReader.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

// What is held against the expected bytes at once stays in the processor's cache.
constexpr std::size_t kShare = 64 * 1024;

bool hasUnsupportedMark(std::string_view bytes) {
  using namespace std::string_view_literals;
  return bytes.starts_with("\x00\x00\xFE\xFF"sv) || bytes.starts_with("\xFF\xFE"sv) ||
         bytes.starts_with("\xFE\xFF"sv);
}

}  // namespace

tFileBytes copyPadded(std::string_view text) {
  constexpr std::size_t kPadding = tIniLineReader::kPadding;
  tFileBytes copy{std::make_unique_for_overwrite<char[]>(text.size() + kPadding), text.size()};
  std::copy(text.begin(), text.end(), copy.bytes.get());
  std::fill_n(copy.bytes.get() + text.size(), kPadding, '\0');
  return copy;
}

int tIniText::read(const char* path, std::string_view expected) {
  clear();
  tInputFile file(path);
  if (!file.isOpen()) return kIniNotOpened;
  int result = kIniOutOfMemory;
  try {
    result = readFrom(file, expected);
  } catch (const std::bad_alloc&) {
  }
  if (result >= 0 && hasUnsupportedMark(bytes_)) result = kIniUnsupportedEncoding;
  if (result < 0) clear();
  return result;
}

int tIniText::readFrom(tInputFile& file, std::string_view expected) {
  if (expected.empty() || file.size() != expected.size()) {
    return readOwn(file, {}, {});
  }
  const std::size_t share = std::min(kShare, expected.size() + 1);
  const auto part = std::make_unique_for_overwrite<char[]>(share);
  std::size_t same = 0;
  while (true) {
    const std::int64_t count = file.read(part.get(), share);
    if (count < 0) return kIniReadFailed;
    const std::string_view read(part.get(), static_cast<std::size_t>(count));
    const std::string_view left = expected.substr(same);
    const bool isLast = read.size() < share;
    if (isLast ? read != left : !left.starts_with(read)) {
      return readOwn(file, expected.substr(0, same), read);
    }
    if (isLast) break;
    same += read.size();
  }
  bytes_ = expected;
  return kIniLoaded;
}

// The rest of a file behind what has been read.
int tIniText::readOwn(tInputFile& file, std::string_view known, std::string_view further) {
  own_.size = known.size() + further.size();
  if (own_.size > 0) own_.bytes = std::make_unique_for_overwrite<char[]>(own_.size);
  std::copy(further.begin(), further.end(),
            std::copy(known.begin(), known.end(), own_.bytes.get()));
  if (!readWholeFile(file, tIniLineReader::kPadding, own_)) return kIniReadFailed;
  bytes_ = {own_.bytes.get(), own_.size};
  return kIniLoaded;
}

void tIniText::makeOwn() {
  if (own_.bytes || bytes_.empty()) return;
  own_ = copyPadded(bytes_);
  bytes_ = {own_.bytes.get(), own_.size};
}

tFileBytes tIniText::takePadded() {
  bytes_ = {};
  return std::move(own_);
}

void tIniText::clear() {
  own_ = {};
  bytes_ = {};
}

}  // namespace varmex::inline nCORPXITOOLS000
