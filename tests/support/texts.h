#ifndef TESTS_SUPPORT_TEXTS_H
#define TESTS_SUPPORT_TEXTS_H

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace test {

// What stands ahead of a separator and behind it; all of a text without one is ahead.
inline std::pair<std::string, std::string> cut(const std::string& text,
                                               const std::string& separator) {
  const std::size_t at = text.find(separator);
  if (at == std::string::npos) return {text, ""};
  return {text.substr(0, at), text.substr(at + separator.size())};
}

// The texts between separators; one at the end of the text begins none.
inline std::vector<std::string> split(std::string text, const std::string& separator) {
  std::vector<std::string> parts;
  while (!text.empty()) std::tie(parts.emplace_back(), text) = cut(text, separator);
  return parts;
}

}  // namespace test

#endif
