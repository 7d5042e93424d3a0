#include "corpxiTools/fileSystem/posix/registryText.h"

#include <algorithm>
#include <utility>

#include "corpxiTools/fileSystem/posix/registryNames.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

using tSections = std::vector<tRegistrySection>;

void sortByPath(tSections& sections) {
  std::sort(sections.begin(), sections.end(),
            [](const tRegistrySection& a, const tRegistrySection& b) {
              const auto order = compareRegistryNames(a.path, b.path);
              return order != 0 ? order < 0 : a.order < b.order;
            });
}

tSections::iterator endOfPath(tSections& sections, tSections::iterator begin) {
  return std::find_if(begin, sections.end(), [begin](const tRegistrySection& section) {
    return !sameRegistryName(section.path, begin->path);
  });
}

// A key that is taken away, as a section is come by that is at or below it.
struct tDeletedKey {
  std::string_view path;
  std::size_t order;  // the latest in which it, or one above it, is taken away
};

// The deletions at or above the sections, which come by path.
class tDeletedKeys {
 public:
  // Takes up those of one path.
  void enter(std::string_view path, std::size_t order) {
    while (!keys_.empty() && !isBelow(path, keys_.back().path)) keys_.pop_back();
    if (order == 0) return;
    keys_.push_back({path, std::max(order, keys_.empty() ? 0 : keys_.back().order)});
  }

  // The uppermost that came behind the section; null without one.
  const tDeletedKey* find(std::size_t order) const {
    const auto found =
        std::upper_bound(keys_.begin(), keys_.end(), order,
                         [](std::size_t of, const tDeletedKey& key) { return of < key.order; });
    return found == keys_.end() ? nullptr : &*found;
  }

 private:
  std::vector<tDeletedKey> keys_;
};

// Of a section whose key is taken away later the keys above that one remain. False when there are
// no deletions.
bool applyDeletions(tSections& sections) {
  tDeletedKeys deleted;
  for (auto begin = sections.begin(); begin != sections.end();) {
    const auto end = endOfPath(sections, begin);
    std::size_t latest = 0;
    for (auto section = begin; section != end; ++section) {
      if (section->isDeletion) latest = section->order;
    }
    deleted.enter(begin->path, latest);
    for (auto section = begin; section != end; ++section) {
      const tDeletedKey* const key = deleted.find(section->order);
      if (!key || section->isDeletion) continue;
      section->path = section->path.substr(0, key->path.rfind('\\'));
      section->valueCount = 0;
    }
    begin = end;
  }
  return std::erase_if(sections, [](const auto& section) { return section.isDeletion; }) > 0;
}

// Of the values of one name, which come by name and then in the order of the text, one remains at
// most; the others become deletions.
void mergeRepeated(std::vector<tRegistryTextValue>& values, std::span<const std::size_t> numbers) {
  tRegistryTextValue* first = nullptr;
  for (const std::size_t number : numbers) {
    tRegistryTextValue& value = values[number];
    if (first && !sameRegistryName(first->name, value.name)) first = nullptr;
    if (!first) {
      if (!value.isDeletion()) first = &value;
      continue;
    }
    first->type = value.type;
    first->data = std::exchange(value.data, {});
    if (first->isDeletion()) first = nullptr;
  }
}

}  // namespace

const tRegistryTextValue* tRegistryTextKey::find(std::string_view name) const {
  const auto found = std::lower_bound(byName_.begin(), byName_.end(), name,
                                      [this](std::size_t number, std::string_view of) {
                                        return compareRegistryNames(values_[number].name, of) < 0;
                                      });
  if (found == byName_.end() || !sameRegistryName(values_[*found].name, name)) return nullptr;
  return &values_[*found];
}

tRegistryText::tRegistryText(tFileBytes content) : content_(std::move(content)) {
  tRegistryEntries entries = readRegistryEntries(content_);
  sortByPath(entries.sections);
  if (applyDeletions(entries.sections)) sortByPath(entries.sections);
  values_.reserve(entries.values.size());
  byName_.reserve(entries.values.size());
  for (auto begin = entries.sections.begin(); begin != entries.sections.end();) {
    const auto end = endOfPath(entries.sections, begin);
    addKey({begin, end}, entries.values);
    begin = end;
  }
}

// Of the values of all sections of one path, those that remain.
void tRegistryText::addKey(std::span<const tRegistrySection> sections,
                           std::vector<tRegistryTextValue>& values) {
  const std::size_t begin = values_.size();
  for (const tRegistrySection& section : sections) {
    for (std::size_t n = 0; n < section.valueCount; ++n) byName_.push_back(section.firstValue + n);
  }
  const auto numbers = byName_.begin() + static_cast<std::ptrdiff_t>(begin);
  std::sort(numbers, byName_.end(), [&values](std::size_t a, std::size_t b) {
    const auto order = compareRegistryNames(values[a].name, values[b].name);
    return order != 0 ? order < 0 : a < b;
  });
  mergeRepeated(values, {numbers, byName_.end()});
  byName_.erase(std::remove_if(numbers, byName_.end(),
                               [&values](std::size_t n) { return values[n].isDeletion(); }),
                byName_.end());
  std::vector<std::size_t> remaining(numbers, byName_.end());
  std::sort(remaining.begin(), remaining.end());
  for (const std::size_t number : remaining) values_.push_back(values[number]);
  std::for_each(numbers, byName_.end(), [&remaining](std::size_t& number) {
    const auto place = std::lower_bound(remaining.begin(), remaining.end(), number);
    number = static_cast<std::size_t>(place - remaining.begin());
  });
  keys_.push_back({sections[0].path, sections[0].order, begin, remaining.size(), false});
}

tRegistryText::tKeys::const_iterator tRegistryText::lowerBound(std::string_view path) const {
  return std::lower_bound(keys_.begin(), keys_.end(), path,
                          [](const tRegistrySection& key, std::string_view of) {
                            return compareRegistryNames(key.path, of) < 0;
                          });
}

std::optional<tRegistryTextKey> tRegistryText::findKey(std::string_view path) const {
  const auto key = lowerBound(path);
  if (key == keys_.end()) return std::nullopt;
  if (isBelow(key->path, path)) return tRegistryTextKey();
  if (!sameRegistryName(key->path, path)) return std::nullopt;
  return tRegistryTextKey(std::span(values_).subspan(key->firstValue, key->valueCount),
                          std::span(byName_).subspan(key->firstValue, key->valueCount));
}

std::vector<std::string_view> tRegistryText::subkeys(std::string_view path) const {
  struct tFound {
    std::string_view name;
    std::size_t order;
  };
  std::vector<tFound> found;
  for (auto key = lowerBound(path); key != keys_.end(); ++key) {
    if (sameRegistryName(key->path, path)) continue;
    if (!isBelow(key->path, path)) break;
    const std::string_view below = key->path.substr(path.size() + 1);
    const tFound child{below.substr(0, below.find('\\')), key->order};
    if (found.empty() || !sameRegistryName(found.back().name, child.name)) {
      found.push_back(child);
    } else if (child.order < found.back().order) {
      found.back() = child;
    }
  }
  std::sort(found.begin(), found.end(),
            [](const tFound& a, const tFound& b) { return a.order < b.order; });
  std::vector<std::string_view> names;
  for (const tFound& child : found) names.push_back(child.name);
  return names;
}

}  // namespace varmex::inline nCORPXITOOLS000
