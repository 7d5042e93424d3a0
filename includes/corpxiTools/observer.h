#ifndef CORPXITOOLS_OBSERVER_H
#define CORPXITOOLS_OBSERVER_H

#include <cstdint>
#include <string>
#include <string_view>

#include "ostrel/quarks/numberedName.h"

namespace varmex::inline nCORPXITOOLS000 {

class tIniFile;
struct tIniItem;
struct tIniPlace;
struct tIniSection;
enum class tRegistryRoot;
enum class tRegistryView;

// The reader tells each look-up and what it found, null for nothing, to whoever looks on. In the
// library that is nobody: the functions are empty and leave nothing in its code. In the copy of the
// model that the command links they are those of source/observed/.
#ifdef VARMEX_OBSERVED

void observeSection(const tIniFile& file, std::string_view name, const tIniSection* found);
inline void observeSection(const tIniFile& file, const tNumberedName& name,
                           const tIniSection* found) {
  observeSection(file, name.text(), found);
}
void observeItem(const tIniFile& file, const tIniSection* section, std::string_view item,
                 const tIniItem* found);

// Of an item that is asked for where there is no such section.
void observeMissing(const tIniFile& file, const tIniPlace& place, std::string_view item);

// Each answers the error, the system's number, 0 for none. `key` tells open keys apart.
std::uint32_t observeKey(const void* key, tRegistryRoot root, const std::string& subkey,
                         tRegistryView view, std::uint32_t error);
std::uint32_t observeValue(const void* key, std::string_view name, std::uint32_t type,
                           const void* data, std::uint32_t size, std::uint32_t error);
std::uint32_t observeSubkey(const void* key, const char* name, std::uint32_t error);

// Of a registry that is a text: the text as it stands, ahead of being cut up in place, and where in
// it what was told last is, by a pointer that `find` answers; null for nowhere.
void observeText(std::string_view text);
void observePlace(const char* place);
template <class Find>
void observePlaceBy(const Find& find) {
  observePlace(find());
}

#else

template <class Name>
void observeSection(const tIniFile&, const Name&, const tIniSection*) {}
inline void observeItem(const tIniFile&, const tIniSection*, std::string_view, const tIniItem*) {}
inline void observeMissing(const tIniFile&, const tIniPlace&, std::string_view) {}
inline std::uint32_t observeKey(const void*, tRegistryRoot, const std::string&, tRegistryView,
                                std::uint32_t error) {
  return error;
}
inline std::uint32_t observeValue(const void*, std::string_view, std::uint32_t, const void*,
                                  std::uint32_t, std::uint32_t error) {
  return error;
}
inline std::uint32_t observeSubkey(const void*, const char*, std::uint32_t error) { return error; }
inline void observeText(std::string_view) {}
template <class Find>
void observePlaceBy(const Find&) {}

#endif

}  // namespace varmex::inline nCORPXITOOLS000

#endif
