#ifndef TOOLS_VARMEX_CLIENT_H
#define TOOLS_VARMEX_CLIENT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "varmex/varmex.h"

namespace tool {

// A failed call: its code with the status text.
class tError : public std::runtime_error {
 public:
  tError(std::int32_t code, const std::string& statusText)
      : std::runtime_error(statusText), code_(code) {}

  std::int32_t code() const { return code_; }

 private:
  std::int32_t code_;
};

// The status record of one call. `check` throws what the call left in it.
class tCall {
 public:
  tCall() : record_(varmex_makeStatus()) {}
  ~tCall() { varmex_releaseStatus(&record_); }
  tCall(const tCall&) = delete;
  tCall& operator=(const tCall&) = delete;

  operator tStatusRecord*() { return &record_; }
  std::int32_t code() const { return record_.code; }
  const char* text() const { return varmex_statusText(&record_); }
  void check() const {
    if (record_.code < 0) throw tError(record_.code, text());
  }

 private:
  tStatusRecord record_;
};

// Whether a code says "this item has no such thing".
bool meansNothing(std::int32_t code);

// An owned item. Attributes that do not apply to it answer nothing; other failures throw tError.
class tItem {
 public:
  explicit tItem(varmex_Item* handle) : handle_(handle) {}

  varmex_Item* get() const { return handle_.get(); }
  std::uint32_t kind() const;
  std::optional<std::uint32_t> number(std::uint32_t attribute) const;
  std::optional<std::string> text(std::uint32_t attribute) const;
  std::vector<tItem> items(std::uint32_t container) const;

 private:
  struct tCloser {
    void operator()(varmex_Item* item) const { varmex_close(item); }
  };
  std::unique_ptr<varmex_Item, tCloser> handle_;
};

tItem openSession();
// Has the description brought up to date first; a failure of that is left in `warning`.
tItem openSynchronizedSession(std::optional<tError>& warning);
tItem openChassis(const tItem& session, std::uint32_t number);
tItem openSlot(const tItem& chassis, std::uint32_t number);

}  // namespace tool

#endif
