#ifndef TOOLS_VARMEX_DESCRIBE_REASON_H
#define TOOLS_VARMEX_DESCRIBE_REASON_H

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "tools/varmex/describe/attributes.h"
#include "tools/varmex/describe/json.h"
#include "tools/varmex/text/failures.h"
#include "varmex/varmex.hpp"

namespace tool {

// Why there is no answer.
struct tReason {
  std::int32_t code;     // 0 for an exception that is none of the library's
  std::string constant;  // that of the code, or the exception's type
  std::string detail;
  std::string sentence;  // for people
  std::string remedy;    // what to do about it; may be empty
};

// `asked` is what was asked for, as far as that is known.
tReason reasonOf(const varmex::Error& error, const tAsked& asked = {});
tReason reasonOf(const std::exception& exception, const tAsked& asked = {});

// An item with an attribute of it.
tAsked askedOf(const varmex::ItemBase& item, std::uint32_t attribute);

// The trigger line that an attribute of a bridge is about, if it is about one.
std::optional<std::uint32_t> lineOf(std::uint32_t attribute);

tJson jsonOf(const tReason& reason);

// Of a query that failed: whether the description says nothing about the attribute, or the item is
// of another kind; anything else is a fault.
bool isAbsence(varmex::Status& status, const tAttribute& attribute);

// The same of what was thrown; `attribute` names what was asked for, be it no attribute.
bool isAbsence(const varmex::Error& error, std::string_view attribute);

}  // namespace tool

#endif
