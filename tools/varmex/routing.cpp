#include "tools/varmex/routing.h"

#include <cstdlib>
#include <functional>
#include <iomanip>

#include "varmex/telmar_ra_varmex.h"

namespace tool {

namespace {

struct tCloser {
  void operator()(telmar_ra_Session* session) const { telmar_ra_varmex_destroySession(session); }
  void operator()(telmar_ra_TerminalIterator* iterator) const {
    telmar_ra_varmex_TerminalIterator_destroy(iterator);
  }
};
using tSession = std::unique_ptr<telmar_ra_Session, tCloser>;
using tIterator = std::unique_ptr<telmar_ra_TerminalIterator, tCloser>;

// A reply of the adaptor, in a buffer from realloc.
class tReply {
 public:
  tReply() = default;
  ~tReply() { std::free(text_); }
  tReply(const tReply&) = delete;
  tReply& operator=(const tReply&) = delete;
  char** slot() { return &text_; }
  tJson json() const { return text_ ? tJson::parse(text_, nullptr, false) : tJson(); }

 private:
  char* text_ = nullptr;
};

struct tGroup {
  const char* prefix;  // of its terminals' names
  const char* mask;
};

constexpr tGroup kGroups[] = {{"PXI_Trig", "1"}, {"PXI_Star", "2"}, {"PXIe_DStar", "4"}};

tSession openGroup(const std::string& address, const tGroup& group, tCall& call) {
  const std::string name = address + ':' + group.mask;
  return tSession(telmar_ra_varmex_createSession(name.c_str(), std::realloc, call));
}

tJson describeTerminal(telmar_ra_TerminalIterator* iterator) {
  tJson terminal;
  tCall call;
  for (const char* name : {"name", "busType", "busName", "canonicalName", "visibility"}) {
    terminal[name] = telmar_ra_varmex_TerminalIterator_getStringAttribute(iterator, name, call);
  }
  terminal["busLine"] =
      telmar_ra_varmex_TerminalIterator_getU32Attribute(iterator, "busLine", call);
  for (const char* name : {"isExternal", "isOwned", "isAlias", "isMaskedOut"}) {
    terminal[name] = telmar_ra_varmex_TerminalIterator_getBoolAttribute(iterator, name, call);
  }
  call.check();
  return terminal;
}

void appendTerminals(telmar_ra_Session* session, tJson& terminals) {
  tCall call;
  const tIterator iterator(telmar_ra_varmex_getAllTerminals(session, call));
  call.check();
  while (!telmar_ra_varmex_TerminalIterator_isEnd(iterator.get())) {
    terminals.push_back(describeTerminal(iterator.get()));
    telmar_ra_varmex_TerminalIterator_next(iterator.get(), call);
  }
}

const tGroup& groupOf(const std::string& terminal) {
  for (const tGroup& group : kGroups) {
    if (terminal.starts_with(group.prefix)) return group;
  }
  throw std::invalid_argument("no such terminal: " + terminal);
}

// What a step answered: its reply if it has one, or its failure.
tJson stepOf(const char* name, const tCall& call, const tJson& reply = {}) {
  tJson step = {{"step", name}, {"code", call.code()}};
  if (call.code() != 0) step["status"] = tJson::parse(call.text(), nullptr, false);
  if (!reply.is_null()) step["reply"] = reply;
  return step;
}

}  // namespace

tJson listTerminals(const std::string& address) {
  tJson terminals = tJson::array();
  for (const tGroup& group : kGroups) {
    tCall call;
    const tSession session = openGroup(address, group, call);
    if (meansNothing(call.code())) continue;  // the slot has no lines of this group
    call.check();
    appendTerminals(session.get(), terminals);
  }
  return terminals;
}

void showTerminals(const tJson& terminals, std::ostream& out) {
  for (const tJson& terminal : terminals) {
    out << std::left << std::setw(14) << terminal.value("name", "") << std::setw(4)
        << terminal.value("busLine", 0U) << terminal.value("busName", "") << '\n';
  }
}

tJson walkRoute(const std::string& address, const std::string& terminal, const std::string& token) {
  tCall opening;
  const tSession session = openGroup(address, groupOf(terminal), opening);
  opening.check();
  tJson steps = tJson::array();
  const tJson seeds = {{{"terminal", terminal},
                        {"cost", 0},
                        {"constraints", tJson::object()},
                        {"srcDeviceToken", token}}};
  const std::string destinations = tJson::array({terminal}).dump();
  tCall calculating;
  tReply routes;
  telmar_ra_varmex_calculateRoute(session.get(), seeds.dump().c_str(), destinations.c_str(),
                                  nullptr, routes.slot(), calculating);
  const tJson reply = routes.json();
  steps.push_back(stepOf("calculate", calculating, reply));
  if (!reply.is_array() || reply.empty()) return steps;
  const std::uint32_t ticket = reply[0].value("ticket", 0U);
  tCall reserving;
  tReply conflicts;
  telmar_ra_varmex_reserveRoute(session.get(), ticket, conflicts.slot(), reserving);
  steps.push_back(stepOf("reserve", reserving, conflicts.json()));
  tCall programming;
  telmar_ra_varmex_programRoute(session.get(), ticket, programming);
  steps.push_back(stepOf("program", programming));
  const tCall silent;
  telmar_ra_varmex_unprogramRoute(session.get(), ticket);
  steps.push_back(stepOf("unprogram", silent));
  telmar_ra_varmex_unreserveRoute(session.get(), ticket);
  steps.push_back(stepOf("unreserve", silent));
  telmar_ra_varmex_destroyRoute(session.get(), ticket);
  steps.push_back(stepOf("destroy", silent));
  return steps;
}

void showRoute(const tJson& steps, std::ostream& out) {
  for (const tJson& step : steps) {
    out << std::left << std::setw(11) << step.value("step", "");
    if (step.value("code", 0) != 0) {
      out << "error " << step.value("code", 0) << ' '
          << step["status"].value("error_constant", "unnamed");
    } else {
      out << (step.contains("reply") ? step["reply"].dump() : "done");
    }
    out << '\n';
  }
}

}  // namespace tool
