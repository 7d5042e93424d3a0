#ifndef TELMAR_INTERFACES_H
#define TELMAR_INTERFACES_H

#include <cstdint>

// What a routing coordinator sees of an adaptor. Failures are exceptions.
namespace telmar {

// Sessions and iterators are destroyed alike.
class AdaptorObject {
 public:
  AdaptorObject() = default;
  AdaptorObject(const AdaptorObject&) = delete;
  AdaptorObject& operator=(const AdaptorObject&) = delete;
  virtual ~AdaptorObject() = default;
};

class TerminalIteratorInterface : public AdaptorObject {
 public:
  virtual void next() = 0;
  virtual bool isEnd() const = 0;
  virtual const char* getStringAttribute(const char* name) const = 0;
  virtual bool getBoolAttribute(const char* name) const = 0;
  virtual std::uint32_t getU32Attribute(const char* name) const = 0;
  virtual void resetTerminal(void* argument) = 0;
};

class RoutingAdaptorSessionInterface : public AdaptorObject {
 public:
  virtual void getHandledConstraints(char** constraintsOut) = 0;
  virtual std::int32_t calculateRoute(const char* seedsJson, const char* destinationsJson,
                                      const void* unused, char** routesOut) = 0;
  virtual void reserveRoute(std::uint32_t ticket, char** conflictsOut) = 0;
  virtual void programRoute(std::uint32_t ticket) = 0;
  virtual void unprogramRoute(std::uint32_t ticket) = 0;
  virtual void unreserveRoute(std::uint32_t ticket) = 0;
  virtual void beginExceptionalRouteDestruction(std::uint32_t ticket) = 0;
  virtual void destroyRoute(std::uint32_t ticket) = 0;
  virtual void getRouteTerminalPath(std::uint32_t ticket, char** pathOut) = 0;
  virtual TerminalIteratorInterface* getAllTerminals() = 0;
  virtual void* calculateResetTerminal(void* first, void* second) = 0;
};

}  // namespace telmar

#endif
