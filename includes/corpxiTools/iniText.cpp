#include "corpxiTools/iniText.h"

#include <algorithm>
#include <new>
#include <utility>

#include "corpxiTools/iniLineReader.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

// What is read at once for the digest stays in the processor's cache.
constexpr std::size_t kShare = 16 * tContentDigester::kBlock;

bool hasUnsupportedMark(std::string_view bytes) {
  using namespace std::string_view_literals;
  return bytes.starts_with("\x00\x00\xFE\xFF"sv) || bytes.starts_with("\xFF\xFE"sv) ||
         bytes.starts_with("\xFE\xFF"sv);
}

}  // namespace

tIniText::tIniText(std::string_view bytes) {
  content_.bytes = std::make_unique<char[]>(bytes.size() + tIniLineReader::kPadding);
  content_.size = bytes.copy(content_.bytes.get(), bytes.size());
}

int tIniText::read(const char* path, tLooked looked, const tContentDigest* expected,
                   tDigested digested) {
  clear();
  int result = kIniOutOfMemory;
  try {
    result = readFile(path, looked, expected, digested);
  } catch (const std::bad_alloc&) {
  }
  if (result >= 0 && hasUnsupportedMark(bytes())) result = kIniUnsupportedEncoding;
  if (result < 0) clear();
  return result;
}

int tIniText::readFile(const char* path, tLooked looked, const tContentDigest* expected,
                       tDigested digested) {
  tInputFile file(path, looked);
  if (!file.isOpen()) return kIniNotOpened;
  if (!expected || expected->size == 0 || file.sizeAtOpen() != expected->size)
    return readBytes(file, digested);
  const int result = compare(file, *expected);
  return result < 0 || isExpected_ ? result : readFile(path, tLooked::no, nullptr, digested);
}

int tIniText::readBytes(tInputFile& file, tDigested digested) {
  const bool isDigested = digested == tDigested::yes && tContentDigester::isReady();
  tContentDigester digester;
  if (!readWholeFile(file, tIniLineReader::kPadding, content_, isDigested ? &digester : nullptr)) {
    return kIniReadFailed;
  }
  if (isDigested) digest_ = digester.digest();
  return kIniLoaded;
}

int tIniText::compare(tInputFile& file, const tContentDigest& expected) {
  const auto size = static_cast<std::size_t>(expected.size);
  const std::size_t share = std::min(kShare, size + 1);
  const auto part = std::make_unique_for_overwrite<char[]>(share);
  tContentDigester digester;
  std::int64_t count = 0;
  do {
    count = file.read(part.get(), share);
    if (count < 0) return kIniReadFailed;
    digester.add({part.get(), static_cast<std::size_t>(count)});
  } while (static_cast<std::size_t>(count) == share && digester.digest().size <= size);
  isExpected_ = digester.digest() == expected;
  return kIniLoaded;
}

tContentDigest tIniText::digest() const {
  if (digest_) return *digest_;
  tContentDigester digester;
  digester.add(bytes());
  return digester.digest();
}

tFileBytes tIniText::takeBytes() {
  digest_.reset();
  return std::exchange(content_, {});
}

void tIniText::clear() {
  content_ = {};
  digest_.reset();
  isExpected_ = false;
}

}  // namespace varmex::inline nCORPXITOOLS000
