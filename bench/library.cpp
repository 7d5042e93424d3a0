#include "bench/library.h"

#include <dlfcn.h>

#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>

namespace bench {

namespace {

std::optional<std::string> pathBefore(const char* file) {
  const char* const folder = std::getenv("VARMEX_BENCH_BEFORE");
  if (!folder) return std::nullopt;
  return std::string(folder) + file;
}

template <class Function>
void find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  if (!function) throw std::runtime_error(std::string("no function ") + name);
}

tLibrary load(const std::string& path) {
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) throw std::runtime_error(dlerror());
  tLibrary functions{};
  find(library, "varmex_openPXISession", functions.openSession);
  find(library, "varmex_close", functions.close);
  find(library, "varmex_getU32Attribute", functions.number);
  find(library, "varmex_getStringAttribute", functions.text);
  find(library, "varmex_getItemContainer", functions.list);
  find(library, "varmex_destroyItemContainer", functions.destroyList);
  find(library, "varmex_ItemIterator_end", functions.end);
  find(library, "varmex_ItemIterator_nextItem", functions.next);
  return functions;
}

}  // namespace

const tLibrary& libraryNow() {
  static const tLibrary library{varmex_openPXISession,   varmex_close,
                                varmex_getU32Attribute,  varmex_getStringAttribute,
                                varmex_getItemContainer, varmex_destroyItemContainer,
                                varmex_ItemIterator_end, varmex_ItemIterator_nextItem};
  return library;
}

const tLibrary* libraryBefore() {
  static const std::optional<std::string> path = pathBefore("/lib/libvarmex.so");
  if (!path) return nullptr;
  static const tLibrary library = load(*path);
  return &library;
}

const char* commandNow() { return VARMEX_BENCH_COMMAND; }

const char* commandBefore() {
  static const std::optional<std::string> path = pathBefore("/bin/varmex");
  return path ? path->c_str() : nullptr;
}

}  // namespace bench
