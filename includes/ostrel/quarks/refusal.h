#ifndef OSTREL_QUARKS_REFUSAL_H
#define OSTREL_QUARKS_REFUSAL_H

#include <cstdint>
#include <string>
#include <string_view>

#include "ostrel/quarks/errorCode.h"
#include "ostrel/quarks/literal.h"
#include "ostrel/quarks/shortName.h"
#include "ostrel/quarks/sourcePosition.h"
#include "ostrel/quarks/status.h"

namespace varmex::inline nOSTRELS100 {

// The words of a message around the two names that it tells.
struct tMessageWords {
  tLiteral ahead;
  tLiteral between;
  tLiteral behind;
};

class tFailureText;

// What a query answers in the place of a value when the caller or the description is the reason: a
// code, the place in the source and the site's detail in the order of the calls. A site reads as
// one statement:
//   return tRefusal(kErrorUnknownItem, OSTREL_HERE).u32("slotNum", slot).text("type", "slot");
//
// Nothing is written before it is reported, so that a refusal nobody asks for costs little. Until
// then it refers to its texts: literals, and texts of the description, which outlives every query.
class tRefusal {
 public:
  tRefusal(const tErrorCode& code, const tSourcePosition& position)
      : code_(code), position_(position) {}

  // A message about an item of a section, without a code: who reports it has that. The section's
  // name is `known`, which lives on, with `added` behind it, which is copied.
  tRefusal(const tMessageWords& words, const char* known, std::string_view added, const char* item);

  tRefusal(const tRefusal& other) { *this = other; }
  tRefusal& operator=(const tRefusal& other);

  tRefusal& open(tLiteral key) { return add(key, tKind::open), *this; }
  tRefusal& debug() { return open("varmex_debug"); }
  tRefusal& close() { return add("", tKind::close), *this; }
  tRefusal& i32(tLiteral key, std::int32_t value);
  tRefusal& u32(tLiteral key, std::uint32_t value);
  tRefusal& text(tLiteral key, tLiteral value);

  // A text that lives on until the report.
  tRefusal& text(tLiteral key, const char* value);

  // A name that may not, once in a refusal.
  tRefusal& name(tLiteral key, const tShortName& value);

  // To be written key by key into the record as it stands, as exceptions of other libraries are,
  // instead of as a whole. It shows in what a caller's own buffer policy is asked for.
  tRefusal& direct() { return isDirect_ = true, *this; }

  std::int32_t code() const { return code_.value; }
  bool isMessage() const { return words_ != nullptr; }

  // The message of a refusal that is one.
  std::string message() const;

  // The refusal of a message, told by that code and place.
  tRefusal wrapped(const tErrorCode& code, const tSourcePosition& position) const;

  // Becomes the status of the record under the merge rule.
  void reportTo(tStatusRecord& record) const;

 private:
  enum class tKind : std::uint8_t { open, close, i32, u32, literal, text, name, message };

  struct tField {
    tLiteral key;
    tKind kind;
    union {
      std::int32_t i32;
      std::uint32_t u32;
      tLiteral literal;
      const char* text;  // of a message: the item
    };
  };

  static constexpr std::size_t kMostFields = 8;

  tField& add(tLiteral key, tKind kind);
  template <class Pen>
  void writeValue(Pen& pen, const tField& field) const;
  template <class Pen>
  void write(Pen& pen) const;
  void writeKeyByKey(tFailureText text) const;
  void reportDirectly(tStatusRecord& record, const char* text) const;
  void reportWhole(tStatusRecord& record, const char* text) const;

  tErrorCode code_;
  tSourcePosition position_;
  const tMessageWords* words_ = nullptr;
  const char* known_ = nullptr;  // what stands ahead of `name_` in a message
  std::uint8_t count_ = 0;
  bool isDirect_ = false;
  bool hasName_ = false;
  tShortName name_;
  tField fields_[kMostFields];
};

}  // namespace varmex::inline nOSTRELS100

#endif
