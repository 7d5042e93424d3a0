#ifndef PXIROUTINGADAPTOR_TERMINALITERATOR_H
#define PXIROUTINGADAPTOR_TERMINALITERATOR_H

#include "pxiRoutingAdaptor/pxiRoutingAdaptorSession.h"

namespace varmex::nCorPxiRoutingAdaptor {

// A cursor over the terminals of a session's device. The table is constant, so it takes no lock;
// the session must outlive it.
class TerminalIterator : public telmar::TerminalIteratorInterface {
 public:
  explicit TerminalIterator(const pxiRoutingAdaptorSession& session) : session_(session) {}

  void next() override { ++index_; }
  bool isEnd() const override { return index_ >= session_.terminals().size(); }

  // Null, false and 0 for a name that the operation does not know, and at the end.
  const char* getStringAttribute(const char* name) const override;
  bool getBoolAttribute(const char* name) const override;
  std::uint32_t getU32Attribute(const char* name) const override;

  void resetTerminal(void* argument) override;

 private:
  const TerminalRecord& current() const { return session_.terminals()[index_]; }

  std::uint64_t index_ = 0;
  const pxiRoutingAdaptorSession& session_;
};

}  // namespace varmex::nCorPxiRoutingAdaptor

#endif
