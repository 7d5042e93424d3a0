#include "ostrel/quarks/refusal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "ostrel/quarks/failure.h"

namespace varmex::inline nOSTRELS100 {

namespace {

// Texts up to this length are written here first; nearly all are. They fit the smallest buffer of
// the standard policy.
constexpr std::size_t kUsualSize = 510;

constexpr tErrorCode kNoCode{0, nullptr};
constexpr tSourcePosition kNoPosition{nullptr, 0, nullptr};

// Bytes that a JSON string can't hold as they stand, and the end of the text.
constexpr auto kIsSpecial = [] {
  std::array<bool, 256> special{};
  for (std::size_t byte = 0; byte < ' '; ++byte) special[byte] = true;
  for (const char byte : {'"', '\\', '\x7F'}) special[static_cast<std::size_t>(byte)] = true;
  return special;
}();

// Writes into a text of fixed size. Once something finds no room, nothing does.
class tPen {
 public:
  tPen(char* begin, char* end) : begin_(begin), at_(begin), end_(end) {}

  template <std::size_t Size>
  void put(const char (&text)[Size]) {
    raw({text, Size - 1});
  }

  void raw(std::string_view text) {
    if (!hasRoom(text.size())) return;
    std::memcpy(at_, text.data(), text.size());
    at_ += text.size();
  }

  void escaped(const char* text) {
    while (!kIsSpecial[static_cast<unsigned char>(*text)]) {
      if (!hasRoom(1)) return;
      *at_++ = *text++;
    }
    if (*text != '\0' && hasRoom(jsonEscapedLength(text))) at_ = jsonEscape(at_, text);
  }

  template <class Number>
  void number(Number value) {
    const auto [end, error] = std::to_chars(at_, end_, value);
    error == std::errc() ? at_ = end : end_ = begin_;
  }

  // The text, null when it did not fit. There must be a byte behind the end.
  const char* finish() {
    *at_ = '\0';
    return end_ != begin_ ? begin_ : nullptr;
  }

 private:
  bool hasRoom(std::size_t length) {
    if (end_ - at_ >= static_cast<std::ptrdiff_t>(length)) return true;
    end_ = begin_;
    return false;
  }

  char* begin_;
  char* at_;
  char* end_;  // at the beginning once there was no room
};

}  // namespace

tRefusal::tRefusal(const tMessageWords& words, const char* known, std::string_view added,
                   const char* item)
    : tRefusal(kNoCode, kNoPosition) {
  words_ = &words;
  known_ = known;
  name_ = tShortName(added);
  hasName_ = true;
  debug().add("wrappedMessage", tKind::message).text = item;
}

tRefusal& tRefusal::operator=(const tRefusal& other) {
  code_ = other.code_;
  position_ = other.position_;
  words_ = other.words_;
  known_ = other.known_;
  count_ = other.count_;
  isDirect_ = other.isDirect_;
  hasName_ = other.hasName_;
  if (hasName_) name_ = other.name_;
  std::copy(other.fields_, other.fields_ + count_, fields_);
  return *this;
}

tRefusal::tField& tRefusal::add(tLiteral key, tKind kind) {
  if (count_ == kMostFields) std::abort();
  tField& field = fields_[count_++];
  field.key = key;
  field.kind = kind;
  return field;
}

tRefusal& tRefusal::i32(tLiteral key, std::int32_t value) {
  add(key, tKind::i32).i32 = value;
  return *this;
}

tRefusal& tRefusal::u32(tLiteral key, std::uint32_t value) {
  add(key, tKind::u32).u32 = value;
  return *this;
}

tRefusal& tRefusal::text(tLiteral key, tLiteral value) {
  add(key, tKind::literal).literal = value;
  return *this;
}

tRefusal& tRefusal::text(tLiteral key, const char* value) {
  add(key, tKind::text).text = value;
  return *this;
}

tRefusal& tRefusal::name(tLiteral key, const tShortName& value) {
  name_ = value;
  hasName_ = true;
  add(key, tKind::name);
  return *this;
}

std::string tRefusal::message() const {
  const auto& [ahead, between, behind] = *words_;
  std::string text(ahead.view());
  return text.append(known_).append(name_).append(between).append(fields_[1].text).append(behind);
}

tRefusal tRefusal::wrapped(const tErrorCode& code, const tSourcePosition& position) const {
  tRefusal refusal = *this;
  refusal.code_ = code;
  refusal.position_ = position;
  return refusal.direct();
}

template <class Pen>
void tRefusal::writeValue(Pen& pen, const tField& field) const {
  if (field.kind == tKind::i32) return pen.number(field.i32);
  if (field.kind == tKind::u32) return pen.number(field.u32);
  pen.put("\"");
  switch (field.kind) {
    case tKind::literal: pen.raw(field.literal); break;
    case tKind::text: pen.escaped(field.text); break;
    case tKind::name: pen.escaped(name_.c_str()); break;
    default:
      pen.raw(words_->ahead);
      pen.escaped(known_);
      pen.escaped(name_.c_str());
      pen.raw(words_->between);
      pen.escaped(field.text);
      pen.raw(words_->behind);
  }
  pen.put("\"");
}

// The whole text. An object that is open at the end is closed there.
template <class Pen>
void tRefusal::write(Pen& pen) const {
  pen.put("{\"error_constant\":\"");
  pen.escaped(code_.constant);
  pen.put("\",\"file\":\"");
  pen.escaped(position_.file);
  pen.put("\",\"line\":");
  pen.number(static_cast<std::int32_t>(position_.line));
  pen.put(",\"component\":\"");
  pen.escaped(position_.component);
  pen.put("\"");
  bool isOpen = false;
  bool isFirst = false;
  for (const tField* field = fields_; field != fields_ + count_; ++field) {
    if (field->kind == tKind::close) {
      pen.put("}");
      isOpen = false;
      continue;
    }
    if (!isFirst) pen.put(",");
    isFirst = field->kind == tKind::open;
    pen.put("\"");
    pen.raw(field->key);
    if (isFirst) {
      pen.put("\":{");
      isOpen = true;
    } else {
      pen.put("\":");
      writeValue(pen, *field);
    }
  }
  if (isOpen) pen.put("}");
  pen.put("}");
}

void tRefusal::writeKeyByKey(tFailureText text) const {
  for (const tField* field = fields_; field != fields_ + count_; ++field) {
    const char* const key = field->key.c_str();
    switch (field->kind) {
      case tKind::open: text.open(key); break;
      case tKind::close: text.close(); break;
      case tKind::i32: text.i32(key, field->i32); break;
      case tKind::u32: text.u32(key, field->u32); break;
      case tKind::literal: text.text(key, field->literal.c_str()); break;
      case tKind::text: text.text(key, field->text); break;
      case tKind::name: text.text(key, name_.c_str()); break;
      case tKind::message: text.text(key, message().c_str()); break;
    }
  }
}

void tRefusal::reportDirectly(tStatusRecord& record, const char* text) const {
  statusReset(record, code_.value);
  const tStatusWriter writer = statusBegin(record);
  if (!writer.cursor) return;
  const bool isEmpty = writer.cursor == record.text + 1;
  if (text && isEmpty && std::strlen(text) + 2 <= record.capacity) {
    statusSetText(record, text);
  } else {
    writeKeyByKey({writer, code_, position_});
  }
}

void tRefusal::reportWhole(tStatusRecord& record, const char* text) const {
  if (text) {
    statusReset(record, code_.value);
    statusSetText(record, text);
    return;
  }
  tStatusRecord own = makeStatus();
  writeKeyByKey({own, code_, position_});
  statusMerge(record, own);
  statusReleaseText(own);
}

void tRefusal::reportTo(tStatusRecord& record) const {
  if (!replacesStatus(record.code, code_.value)) return;
  char buffer[kUsualSize + 1];
  tPen pen(buffer, buffer + kUsualSize);
  write(pen);
  const char* const text = pen.finish();
  isDirect_ ? reportDirectly(record, text) : reportWhole(record, text);
}

}  // namespace varmex::inline nOSTRELS100
