#include "tools/varmex/describe/sink.h"

#include <algorithm>
#include <charconv>
#include <iostream>

namespace tool {

namespace {

constexpr std::size_t kEnough = 1 << 16;  // to be written at once

bool isPlain(char byte) { return byte >= ' ' && byte < 0x7F && byte != '"' && byte != '\\'; }

}  // namespace

tJsonWriter::~tJsonWriter() { std::cout << written_; }

void tJsonWriter::beginObject(const char* name) {
  begin(name);
  written_ += '{';
  ++depth_;
  isFirst_ = true;
}

void tJsonWriter::endObject() { end('}'); }

void tJsonWriter::beginList(const char* name) {
  begin(name);
  written_ += '[';
  ++depth_;
  isFirst_ = true;
}

void tJsonWriter::endList() { end(']'); }

void tJsonWriter::text(const char* name, std::string_view value) {
  begin(name);
  quote(value);
}

void tJsonWriter::number(const char* name, std::int64_t value) {
  begin(name);
  char digits[24];
  written_.append(digits, std::to_chars(digits, std::end(digits), value).ptr);
}

void tJsonWriter::begin(const char* name) {
  if (depth_ == 0) return;
  written_ += isFirst_ ? "\n" : ",\n";
  isFirst_ = false;
  written_.append(2 * depth_, ' ');
  if (name) ((written_ += '"') += name) += "\": ";
}

void tJsonWriter::end(char bracket) {
  --depth_;
  if (!isFirst_) (written_ += '\n').append(2 * depth_, ' ');
  written_ += bracket;
  isFirst_ = false;
  if (depth_ == 0) written_ += '\n';
  if (written_.size() < kEnough) return;
  std::cout << written_;
  written_.clear();
}

void tJsonWriter::quote(std::string_view value) {
  if (std::all_of(value.begin(), value.end(), isPlain)) {
    ((written_ += '"') += value) += '"';
  } else {
    written_ += tJson(value).dump(-1, ' ', false, tJson::error_handler_t::replace);
  }
}

tJson& tTreeMaker::add(const char* name, tJson value) {
  if (open_.empty()) return tree_ = std::move(value);
  tJson& into = *open_.back();
  if (name) return into[name] = std::move(value);
  into.push_back(std::move(value));
  return into.back();
}

}  // namespace tool
