#include "corpxiTools/iniStore.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "corpxiTools/iniLine.h"
#include "ostrel/quarks/nameBytes.h"
#include "ostrel/quarks/numbers.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

// Up to this many items a section is searched from front to back, which is then the quicker way.
constexpr std::size_t kLargestUnsorted = 32;

std::uint32_t hashName(std::string_view name, const tHashSeed& seed) {
  std::uint64_t hash = name.size();
  const char* position = name.data();
  std::size_t left = name.size();
  for (; left > 16; left -= 16, position += 16) {
    hash = seed.scramble(loadBytes<std::uint64_t>(position) ^ hash,
                         loadBytes<std::uint64_t>(position + 8));
  }
  if (left > 8) hash ^= loadBytes<std::uint64_t>(position);
  const std::uint64_t last =
      name.size() > 8 ? loadBytes<std::uint64_t>(position + left - 8) : loadShort(position, left);
  return static_cast<std::uint32_t>(seed.scramble(hash, last));
}

// A set of names that may answer yes for one that it does not hold, never no for one that it does.
class tNameFilter {
 public:
  void clear() { bits_.fill(0); }
  void fill() { bits_.fill(~std::uint64_t{0}); }

  // Whether the name may have been there before; it is afterwards.
  bool insert(std::string_view name) {
    const std::size_t size = name.size();
    std::uint64_t hash = size <= 8 ? loadShort(name.data(), size)
                                   : loadBytes<std::uint64_t>(name.data()) * 3 ^
                                         loadBytes<std::uint64_t>(name.data() + size - 8);
    hash = (hash ^ size << 56) * 0x9E3779B97F4A7C15;
    std::uint64_t& word = bits_[hash >> 61];
    const std::uint64_t bit = std::uint64_t{1} << (hash >> 55 & 63);
    const bool found = (word & bit) != 0;
    word |= bit;
    return found;
  }

 private:
  std::array<std::uint64_t, 8> bits_{};
};

// The entry of that name, if halving reaches it; the entries may be in any order.
template <class Entry>
Entry* searchByHalving(Entry* entries, std::size_t count, std::string_view name) {
  std::size_t low = 1;
  std::size_t high = count;
  while (low <= high) {
    const std::size_t middle = (low + high) / 2;
    Entry& entry = entries[middle - 1];
    const int order = name.compare(entry.nameView());
    if (order == 0) return &entry;
    if (order < 0) {
      high = middle - 1;
    } else {
      low = middle + 1;
    }
  }
  return nullptr;
}

// Out of the way of what is searched from front to back.
[[gnu::noinline]] const tIniItem* findSorted(const tIniSection& section, std::string_view item) {
  const tIniItem* const begin = section.items;
  const tIniItem* const end = begin + section.count;
  const tIniItem* const place = std::lower_bound(
      begin, end, item,
      [](const tIniItem& entry, std::string_view name) { return entry.nameView() < name; });
  return place != end && isSameName(place->nameView(), item) ? place : nullptr;
}

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

constexpr std::string_view kPieceMark = " Line";

// The number of a piece of a split value, -1 for any other name.
std::int32_t pieceNumber(std::string_view name) {
  const std::size_t mark = name.find(kPieceMark);
  if (mark == std::string_view::npos) return -1;
  const std::string_view digits = name.substr(mark + kPieceMark.size());
  if (digits.empty()) return -1;
  if (digits.find_first_not_of("0123456789") != std::string_view::npos) return -1;
  const tSignedText number = readSigned(digits.data());
  return number.overflowed ? -1 : number.value;
}

bool mayBePiece(std::string_view name) {
  if (!isDigit(name.back())) return false;
  do name.remove_suffix(1);
  while (!name.empty() && isDigit(name.back()));
  return name.ends_with(kPieceMark);
}

}  // namespace

// Fills a store from the text of a file.
class tIniStore::tLoad {
 public:
  // The text is padded as the line reader needs it.
  tLoad(tIniStore& store, tFileBytes text) : store_(store), size_(text.size) {
    store_.text_ = std::move(text.bytes);
  }

  void run() {
    using namespace std::string_view_literals;
    char* begin = store_.text_.get();
    char* const end = begin + size_;
    if (std::string_view(begin, size_).starts_with("\xEF\xBB\xBF"sv)) begin += 3;
    store_.index_.assign(kSmallestIndex, {});
    store_.sections_.reserve(kSmallestIndex / 2);
    tIniLineReader reader(begin, end);
    for (tIniLine line; reader.next(line);) {
      if (!takeLine(line, reader.lineNumber()) && store_.firstBadLine_ < 0) {
        store_.firstBadLine_ = static_cast<int>(reader.lineNumber());
      }
    }
    for (tIniSection& section : store_.sections_) finishSection(section);
  }

 private:
  static constexpr std::size_t kNone = ~std::size_t{0};
  static constexpr std::size_t kSmallestIndex = 64;
  static constexpr std::size_t kSmallestBlock = 16;
  static constexpr std::size_t kUsualItem = 28;  // bytes of text an item mostly takes, at least

  // False for a line that says nothing.
  bool takeLine(const tIniLine& line, std::uint32_t number) {
    const tIniLineContent content = parseIniLine(line);
    switch (content.kind) {
      case tIniLineKind::unreadable: return false;
      case tIniLineKind::comment: break;
      case tIniLineKind::header: takeHeader(content, number); break;
      case tIniLineKind::item:
        if (current_) takeItem(content, number);
        break;
    }
    return true;
  }

  void takeHeader(const tIniLineContent& header, std::uint32_t number) {
    *header.nameEnd = '\0';
    enterSection({header.name, static_cast<std::size_t>(header.nameEnd - header.name)}, number);
  }

  void takeItem(const tIniLineContent& item, std::uint32_t number) {
    char* value = item.value;
    char* end = item.valueEnd;
    // Without a branch: values with and without quotes stand in no order.
    const auto isQuoted = static_cast<unsigned>(end - value >= 2) &
                          static_cast<unsigned>(*value == '"') &
                          static_cast<unsigned>(end[-1] == '"');
    value += isQuoted;
    end -= isQuoted;
    *item.nameEnd = '\0';
    *end = '\0';
    if (next_ == behindBlock_) enterNextBlock(item.name);
    *next_ = {item.name, value, static_cast<std::uint32_t>(item.nameEnd - item.name), number};
    storeItem(*next_);
  }

  void enterSection(std::string_view name, std::uint32_t line) {
    const std::uint32_t hash = hashName(name, store_.hashSeed_);
    tIndexEntry& entry = store_.index_[store_.findPlace(name, hash)];
    tIniSection* section = entry.section ? findRepeated(name) : nullptr;
    if (section) {
      takeUpAgain(*section);
    } else {
      section = &appendSection(name);
      // Of several sections of one name the index keeps the first.
      if (!entry.section) {
        entry = {static_cast<std::uint32_t>(store_.sections_.size()), hash};
        if (++indexed_ * 2 > store_.index_.size()) growIndex();
      } else {
        store_.hasTwins_ = true;
      }
    }
    section->line = line;
    current_ = section;
  }

  // The index has told that the name is not new; whether it is merged, the search by halving
  // decides, unless the last search found the very section.
  tIniSection* findRepeated(std::string_view name) {
    auto& sections = store_.sections_;
    if (lastFound_ != kNone && sections[lastFound_].nameView() == name) {
      return &sections[lastFound_];
    }
    tIniSection* const found = searchByHalving(sections.data(), sections.size(), name);
    if (found) lastFound_ = static_cast<std::size_t>(found - sections.data());
    return found;
  }

  tIniSection& appendSection(std::string_view name) {
    tIniSection& section = store_.sections_.emplace_back();
    section.name = name.data();
    section.nameLength = static_cast<std::uint32_t>(name.size());
    section.items = next_;
    names_.clear();
    return section;
  }

  // Doubles the index. At most half of its places are in use.
  void growIndex() {
    std::vector<tIndexEntry> old(2 * store_.index_.size());
    old.swap(store_.index_);
    for (const tIndexEntry& entry : old) {
      if (entry.section == 0) continue;
      // All names in the index differ, so the first empty place is the one.
      const std::size_t mask = store_.index_.size() - 1;
      std::size_t place = entry.hash & mask;
      while (store_.index_[place].section) place = (place + 1) & mask;
      store_.index_[place] = entry;
    }
  }

  void takeUpAgain(tIniSection& section) {
    names_.fill();
    if (section.moved || section.items + section.count == next_) return;
    section.moved =
        std::make_unique<std::vector<tIniItem>>(section.items, section.items + section.count);
    section.items = section.moved->data();
  }

  // Items stand in blocks: in one, mostly, that has room for what comes behind its beginning in the
  // text. The items of a section that reaches into the next block move there, to stay together.
  [[gnu::noinline]] void enterNextBlock(const char* position) {
    const std::size_t begun = current_->moved ? 0 : current_->count;
    const auto left = static_cast<std::size_t>(store_.text_.get() + size_ - position);
    const std::size_t size = std::max(left / kUsualItem, 2 * begun) + kSmallestBlock;
    auto block = std::make_unique_for_overwrite<tIniItem[]>(size);
    next_ = std::copy_n(current_->items, begun, block.get());
    behindBlock_ = block.get() + size;
    if (!current_->moved) current_->items = block.get();
    block.swap(store_.items_);
    if (block) store_.earlierItems_.push_front(std::move(block));
  }

  // The item stands where the next one goes, and stays there unless it belongs elsewhere.
  void storeItem(const tIniItem& item) {
    const std::string_view name = item.nameView();
    const bool mayBeKnown = names_.insert(name);
    if (mayBeKnown) {
      if (replaceItem(item)) return;
      current_->hasTwins = true;
    }
    if (mayBePiece(name)) current_->hasPieces = true;
    ++current_->count;
    if (current_->moved) {
      appendMoved(item);
    } else {
      ++next_;
    }
  }

  // What is rare stays out of the loop over the lines, which the compiler then makes one function.

  // False when the current section has no such item, or none that the search reaches.
  [[gnu::noinline]] bool replaceItem(const tIniItem& item) {
    tIniItem* const earlier = searchByHalving(current_->items, current_->count, item.nameView());
    if (!earlier) return false;
    earlier->value = item.value;
    earlier->line = item.line;
    return true;
  }

  [[gnu::noinline]] void appendMoved(const tIniItem& item) {
    current_->moved->push_back(item);
    current_->items = current_->moved->data();
  }

  void finishSection(tIniSection& section) {
    if (section.hasPieces) joinPieces(section);
    if (section.count <= kLargestUnsorted) return;
    std::stable_sort(
        section.items, section.items + section.count,
        [](const tIniItem& a, const tIniItem& b) { return a.nameView() < b.nameView(); });
    section.isSorted = true;
  }

  // Pieces of a split value stand in file order, from one numbered 1 to the next such one or to an
  // item that is no piece; they become one item at the place of the first.
  void joinPieces(tIniSection& section) {
    section.hasTwins = true;
    tIniItem* const end = section.items + section.count;
    tIniItem* kept = section.items;
    for (tIniItem* item = section.items; item != end;) {
      tIniItem* behind = item + 1;
      if (pieceNumber(item->nameView()) == 1) {
        while (behind != end && isFurtherPiece(*behind)) ++behind;
        *kept++ = joinRun(item, behind);
      } else {
        *kept++ = *item;
      }
      item = behind;
    }
    section.count = static_cast<std::uint32_t>(kept - section.items);
  }

  static bool isFurtherPiece(const tIniItem& item) {
    const std::int32_t number = pieceNumber(item.nameView());
    return number >= 0 && number != 1;
  }

  tIniItem joinRun(const tIniItem* begin, const tIniItem* end) {
    tIniItem joined = *begin;
    joined.nameLength = static_cast<std::uint32_t>(joined.nameView().find(kPieceMark));
    const_cast<char*>(joined.name)[joined.nameLength] = '\0';  // our own text
    if (end - begin > 1) {
      std::string& value = store_.joinedValues_.emplace_front();
      for (const tIniItem* piece = begin; piece != end; ++piece) value += piece->value;
      joined.value = value.c_str();
    }
    return joined;
  }

  tIniStore& store_;
  std::size_t size_;
  tIniItem* next_ = nullptr;  // where the next item of the section at the end goes
  tIniItem* behindBlock_ = nullptr;
  tIniSection* current_ = nullptr;
  std::size_t lastFound_ = kNone;  // the section that the last successful search found
  std::size_t indexed_ = 0;        // sections in the index
  tNameFilter names_;              // of the current section
};

void tIniStore::clear() {
  index_.clear();
  sections_.clear();
  joinedValues_.clear();
  items_.reset();
  earlierItems_.clear();
  text_.reset();
  firstBadLine_ = -1;
  hasTwins_ = false;
}

int tIniStore::load(const char* path) {
  clear();
  tIniText text;
  const int result = text.read(path);
  return result < 0 ? result : load(std::move(text));
}

int tIniStore::load(tIniText text) {
  clear();
  if (text.bytes().empty()) return kIniLoaded;
  try {
    tLoad(*this, text.takeBytes()).run();
    return kIniLoaded;
  } catch (const std::bad_alloc&) {
    clear();
    return kIniOutOfMemory;
  }
}

// Where the index has the section of that name, or the empty place where it would be.
std::size_t tIniStore::findPlace(std::string_view name, std::uint32_t hash) const {
  const std::size_t mask = index_.size() - 1;
  std::size_t place = hash & mask;
  for (; index_[place].section; place = (place + 1) & mask) {
    if (index_[place].hash != hash) continue;
    if (isSameName(sections_[index_[place].section - 1].nameView(), name)) break;
  }
  return place;
}

const tIniSection* tIniStore::findSection(std::string_view name) const {
  if (index_.empty()) return nullptr;
  const std::uint32_t found = index_[findPlace(name, hashName(name, hashSeed_))].section;
  return found ? &sections_[found - 1] : nullptr;
}

const tIniSection* tIniStore::findSection(const tNumberedName& name) const {
  char usual[64];
  if (name.size() > sizeof usual) return findSection(name.text());
  name.writeTo(usual);
  return findSection(std::string_view(usual, name.size()));
}

const tIniItem* tIniStore::findItem(std::string_view section, std::string_view item) const {
  const tIniSection* const found = findSection(section);
  return found ? findItem(*found, item) : nullptr;
}

const tIniItem* tIniStore::findItem(const tIniSection& section, std::string_view item) {
  if (section.isSorted) return findSorted(section, item);
  const tIniItem* const end = section.items + section.count;
  for (const tIniItem* entry = section.items; entry != end; ++entry) {
    if (isSameName(entry->nameView(), item)) return entry;
  }
  return nullptr;
}

}  // namespace varmex::inline nCORPXITOOLS000
