#ifndef TOOLS_VARMEX_DESCRIBE_SINK_H
#define TOOLS_VARMEX_DESCRIBE_SINK_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/varmex/describe/json.h"

namespace tool {

// Takes a JSON document piece by piece. A name is that of a member of the object that was begun
// last, and null for the document itself and in lists.
class tSink {
 public:
  virtual ~tSink() = default;

  virtual void beginObject(const char* name) = 0;
  virtual void endObject() = 0;
  virtual void beginList(const char* name) = 0;
  virtual void endList() = 0;
  virtual void text(const char* name, std::string_view value) = 0;
  virtual void number(const char* name, std::int64_t value) = 0;
};

// Writes the document as it comes, two blanks of indentation a level, to the standard output. Bytes
// that are no UTF-8 become U+FFFD.
class tJsonWriter final : public tSink {
 public:
  ~tJsonWriter() override;

  void beginObject(const char* name) override;
  void endObject() override;
  void beginList(const char* name) override;
  void endList() override;
  void text(const char* name, std::string_view value) override;
  void number(const char* name, std::int64_t value) override;

 private:
  void begin(const char* name);
  void end(char bracket);
  void quote(std::string_view value);

  std::string written_;
  std::size_t depth_ = 0;
  bool isFirst_ = true;  // of what was begun last
};

// Keeps the document.
class tTreeMaker final : public tSink {
 public:
  void beginObject(const char* name) override { open(name, tJson::object()); }
  void endObject() override { open_.pop_back(); }
  void beginList(const char* name) override { open(name, tJson::array()); }
  void endList() override { open_.pop_back(); }
  void text(const char* name, std::string_view value) override { add(name, std::string(value)); }
  void number(const char* name, std::int64_t value) override { add(name, value); }

  tJson takeTree() { return std::move(tree_); }

 private:
  tJson& add(const char* name, tJson value);
  void open(const char* name, tJson value) { open_.push_back(&add(name, std::move(value))); }

  tJson tree_;
  std::vector<tJson*> open_;
};

}  // namespace tool

#endif
