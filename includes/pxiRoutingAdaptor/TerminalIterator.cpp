#include "pxiRoutingAdaptor/TerminalIterator.h"

#include <cstring>

namespace varmex::nCorPxiRoutingAdaptor {

namespace {

template <class Value>
struct tAttribute {
  const char* name;
  Value TerminalRecord::*field;
};

constexpr tAttribute<std::string> kTexts[] = {
    {"name", &TerminalRecord::name},
    {"visibility", &TerminalRecord::visibility},
    {"busType", &TerminalRecord::busType},
    {"canonicalName", &TerminalRecord::canonicalName},
};

constexpr tAttribute<tReplaceableName> kReplaceableNames[] = {
    {"busName", &TerminalRecord::busName}};

constexpr tAttribute<bool> kFlags[] = {
    {"isExternal", &TerminalRecord::isExternal},
    {"isOwned", &TerminalRecord::isOwned},
    {"isAlias", &TerminalRecord::isAlias},
    {"isMaskedOut", &TerminalRecord::isMaskedOut},
};

constexpr tAttribute<std::uint32_t> kNumbers[] = {{"busLine", &TerminalRecord::busLine}};

template <class Value, std::size_t Size>
Value TerminalRecord::*fieldOf(const tAttribute<Value> (&attributes)[Size], const char* name) {
  for (const tAttribute<Value>& attribute : attributes) {
    if (name && std::strcmp(attribute.name, name) == 0) return attribute.field;
  }
  return nullptr;
}

}  // namespace

const char* TerminalIterator::getStringAttribute(const char* name) const {
  if (isEnd()) return nullptr;
  if (const auto field = fieldOf(kTexts, name)) return (current().*field).c_str();
  const auto replaceable = fieldOf(kReplaceableNames, name);
  return replaceable ? (current().*replaceable).c_str() : nullptr;
}

bool TerminalIterator::getBoolAttribute(const char* name) const {
  const auto field = fieldOf(kFlags, name);
  return field && !isEnd() && current().*field;
}

std::uint32_t TerminalIterator::getU32Attribute(const char* name) const {
  const auto field = fieldOf(kNumbers, name);
  return field && !isEnd() ? current().*field : 0;
}

void TerminalIterator::resetTerminal(void*) { raiseFeatureUnsupported(); }

}  // namespace varmex::nCorPxiRoutingAdaptor
