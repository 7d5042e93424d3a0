#ifndef SEVRIN_IDATATREEMANAGER_H
#define SEVRIN_IDATATREEMANAGER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ostrel/quarks/failure.h"

namespace varmex::inline nSEVRIN000 {

inline constexpr tErrorCode kStatusFileOpenFault{-26650, "kStatusFileOpenFault"};
inline constexpr tErrorCode kStatusAttributeNotFound{-26653, "kStatusAttributeNotFound"};
inline constexpr tErrorCode kStatusChildNotFound{-26654, "kStatusChildNotFound"};
inline constexpr tErrorCode kStatusHandlerNotFound{-26657, "kStatusHandlerNotFound"};
inline constexpr tErrorCode kDataTreeMemoryFull{-52000, "kOSTRELStatusMemoryFull"};

struct tDataTreeAttribute {
  static constexpr std::int32_t kText = 0;
  static constexpr std::int32_t kNumber = 1;

  std::int32_t valueType = kText;
  std::string text;          // the rendering of the value, whichever its type
  std::uint32_t number = 0;  // meaningful for kNumber
};

class iDataTreeManager;

struct tDataTreeRelease {
  void operator()(iDataTreeManager* manager) const;
};

// An owned manager, or null.
using tDataTreeManagerPtr = std::unique_ptr<iDataTreeManager, tDataTreeRelease>;

// A node of a configuration tree, with named attributes and named children. One thread uses it.
// Every operation with a status reports to it; when it holds a failure already, nothing is done and
// the empty result answered. Beyond that, containers may throw std::bad_alloc.
class iDataTreeManager {
 public:
  class iHandlerRegistration;

  iDataTreeManager() = default;
  iDataTreeManager(const iDataTreeManager&) = delete;
  iDataTreeManager& operator=(const iDataTreeManager&) = delete;

  // The node that a URI names, through the handler of its scheme; null on failure, which is
  // kStatusHandlerNotFound or one of the handler's own.
  static tDataTreeManagerPtr open(const std::string& uri, tStatusRecord& status);

  // Destroys the node.
  virtual void release() = 0;

  // Fails with kStatusAttributeNotFound, answering an empty text. Names compare byte by byte.
  virtual tDataTreeAttribute getAttribute(const std::string& name, tStatusRecord& status) const = 0;

  // Null on failure, which is kStatusChildNotFound where the node does not exist.
  virtual tDataTreeManagerPtr getChild(const std::string& name, tStatusRecord& status) const = 0;

  virtual std::vector<std::string> getChildNames(tStatusRecord& status) const = 0;
  virtual std::vector<std::string> getAttributeNames(tStatusRecord& status) const = 0;

  virtual ~iDataTreeManager() = default;
};

// What opens the nodes of one URI scheme. Registrations are static objects, linked into a list
// while the library is loaded.
class iDataTreeManager::iHandlerRegistration {
 public:
  // `scheme` includes the "://" and outlives the registration.
  explicit iHandlerRegistration(const char* scheme);
  iHandlerRegistration(const iHandlerRegistration&) = delete;
  iHandlerRegistration& operator=(const iHandlerRegistration&) = delete;
  virtual ~iHandlerRegistration();

  virtual tDataTreeManagerPtr createManager(const std::string& path, tStatusRecord& status) = 0;

  static iHandlerRegistration* findHandler(const std::string& scheme);

 private:
  static iHandlerRegistration* first_;

  iHandlerRegistration* next_;
  const char* scheme_;
};

}  // namespace varmex::inline nSEVRIN000

#endif
