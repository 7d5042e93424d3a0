#include "tools/varmex/check/findings.h"

#include <algorithm>
#include <tuple>

namespace tool {

void tFindings::add(tSeverity severity, const char* id, const tPosition& position,
                    const std::string& message, const std::function<std::string()>& answer) {
  if (isFull()) return;
  const std::string place = position.file + ':' + std::to_string(position.line);
  if (!known_.insert(place + '\n' + position.item + '\n' + id + '\n' + message).second) return;
  list_.push_back({id, severity, position, message, answer()});
}

std::vector<tFinding> tFindings::sorted() const {
  std::vector<tFinding> list = list_;
  std::stable_sort(list.begin(), list.end(), [](const tFinding& a, const tFinding& b) {
    return std::tie(a.position.file, a.position.line) < std::tie(b.position.file, b.position.line);
  });
  return list;
}

}  // namespace tool
