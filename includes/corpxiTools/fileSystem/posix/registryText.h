#ifndef CORPXITOOLS_FILESYSTEM_POSIX_REGISTRYTEXT_H
#define CORPXITOOLS_FILESYSTEM_POSIX_REGISTRYTEXT_H

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "corpxiTools/fileSystem/posix/registryEntries.h"

namespace varmex::inline nCORPXITOOLS000 {

// A key of a registry text. It refers to the text.
class tRegistryTextKey {
 public:
  tRegistryTextKey() = default;
  tRegistryTextKey(std::span<const tRegistryTextValue> values, std::span<const std::size_t> byName)
      : values_(values), byName_(byName) {}

  // In the order of the text.
  std::span<const tRegistryTextValue> values() const { return values_; }

  // Null when the key has no value of that name.
  const tRegistryTextValue* find(std::string_view name) const;

 private:
  std::span<const tRegistryTextValue> values_;
  std::span<const std::size_t> byName_;  // the values' numbers in the order of their names
};

// A registry editor's export, in UTF-16LE with its mark or in UTF-8, as it stands in an empty
// registry that it was read into: "name"=- and [-KEY] take away what the text has given before, and
// a value given twice has its first spelling and its last content. Malformed lines are passed over;
// what is no export of version 5.00 has no keys. Text values come out in UTF-8.
//
// Nothing changes after the construction, so any number of threads may look up at once. Memory and
// time for it follow the size of the text, whatever it holds.
class tRegistryText {
 public:
  // Throws std::bad_alloc.
  explicit tRegistryText(tFileBytes content);
  tRegistryText(const tRegistryText&) = delete;
  tRegistryText& operator=(const tRegistryText&) = delete;

  // `path` begins with the root's name: "HKEY_LOCAL_MACHINE\SOFTWARE\...". A key is there when the
  // text names it or one below it.
  std::optional<tRegistryTextKey> findKey(std::string_view path) const;

  // The path of the key's header, or of one below it, where it stands in the text; empty without.
  std::string_view headerOf(std::string_view path) const {
    const auto key = lowerBound(path);
    return key == keys_.end() ? std::string_view() : key->path;
  }

  // The names of the keys directly below, in the order of the text.
  std::vector<std::string_view> subkeys(std::string_view path) const;

 private:
  using tKeys = std::vector<tRegistrySection>;

  tKeys::const_iterator lowerBound(std::string_view path) const;
  void addKey(std::span<const tRegistrySection> sections, std::vector<tRegistryTextValue>& values);

  tFileBytes content_;  // holds all names and data
  tKeys keys_;          // each once, by path
  std::vector<tRegistryTextValue> values_;
  std::vector<std::size_t> byName_;  // of each key in turn
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
