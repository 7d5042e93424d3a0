#include "sevrin/iDataTreeManager.h"

#include "ostrel/quarks/untilUnload.h"

namespace varmex::inline nSEVRIN000 {

namespace {

void reportNoHandler(const char* reason, const std::string& uri, const tSourcePosition& position,
                     tStatusRecord& status) {
  tFailure(kStatusHandlerNotFound, position)
      .open("sevrin_debug")
      .text("additionalInfo", reason)
      .text("URI", uri)
      .reportTo(status);
}

}  // namespace

void tDataTreeRelease::operator()(iDataTreeManager* manager) const { manager->release(); }

iDataTreeManager::iHandlerRegistration* iDataTreeManager::iHandlerRegistration::first_ = nullptr;

iDataTreeManager::iHandlerRegistration::iHandlerRegistration(const char* scheme)
    : next_(first_), scheme_(scheme) {
  first_ = this;
}

iDataTreeManager::iHandlerRegistration::~iHandlerRegistration() {
  iHandlerRegistration** link = &first_;
  while (*link && *link != this) link = &(*link)->next_;
  if (*link) *link = next_;
}

iDataTreeManager::iHandlerRegistration* iDataTreeManager::iHandlerRegistration::findHandler(
    const std::string& scheme) {
  expectExit();
  iHandlerRegistration* handler = first_;
  while (handler && scheme != handler->scheme_) handler = handler->next_;
  return handler;
}

tDataTreeManagerPtr iDataTreeManager::open(const std::string& uri, tStatusRecord& status) {
  constexpr std::string_view kSeparator = "://";
  if (isFailure(status)) return nullptr;
  const std::size_t separator = uri.find(kSeparator);
  if (separator == std::string::npos) {
    reportNoHandler("Could not find separator", uri, OSTREL_HERE, status);
    return nullptr;
  }
  const std::size_t path = separator + kSeparator.size();
  iHandlerRegistration* const handler = iHandlerRegistration::findHandler(uri.substr(0, path));
  if (!handler) {
    reportNoHandler("Could not find handler", uri, OSTREL_HERE, status);
    return nullptr;
  }
  auto manager = handler->createManager(uri.substr(path), status);
  if (isFailure(status)) return nullptr;
  return manager;
}

}  // namespace varmex::inline nSEVRIN000
