#ifndef CORPXITOOLS_INITEXT_H
#define CORPXITOOLS_INITEXT_H

#include <optional>
#include <string_view>

#include "corpxiTools/fileSystem/fileBytes.h"
#include "ostrel/quarks/contentDigest.h"

namespace varmex::inline nCORPXITOOLS000 {

// Results of reading and of a load. Not negative: loaded.
enum tIniResult : int {
  kIniLoaded = 0,
  kIniUnsupportedEncoding = -3,
  kIniOutOfMemory = -12,
  kIniNotOpened = -22,
  kIniReadFailed = -5002,
};

// Whether a text is to know its digest from being read, for less than working it out later.
enum class tDigested : bool { no, yes };

// The bytes of a description file as they stand on the disk.
class tIniText {
 public:
  tIniText() = default;
  // Of bytes that come from elsewhere.
  explicit tIniText(std::string_view bytes);

  // Replaces the content by that of the file; on failure nothing is left. A file whose digest is as
  // expected, if anything is, is read once and not kept. One of the same size and another digest is
  // read again.
  int read(const char* path, tLooked looked = tLooked::no, const tContentDigest* expected = nullptr,
           tDigested digested = tDigested::no);

  // Whether the content is the expected one. It has no bytes then, as has one that was never read.
  bool is(const tContentDigest& expected) const {
    return isExpected_ || (bytes().empty() && expected.size == 0);
  }

  std::string_view bytes() const { return {content_.bytes.get(), content_.size}; }

  // Only while tContentDigester::isReady().
  tContentDigest digest() const;

  // The bytes, padded as the line reader needs it. The text is empty afterwards.
  tFileBytes takeBytes();

 private:
  int readFile(const char* path, tLooked looked, const tContentDigest* expected,
               tDigested digested);
  int readBytes(tInputFile& file, tDigested digested);
  int compare(tInputFile& file, const tContentDigest& expected);
  void clear();

  tFileBytes content_;
  std::optional<tContentDigest> digest_;  // of the content, if it is known
  bool isExpected_ = false;
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
