#include "source/varmex/sharedDescription.h"

#include <atomic>
#include <memory>

#include "source/varmex/boundary.h"

namespace varmex {

struct tDescriptionPlace {
  std::atomic<std::int32_t> users{0};  // kFree, kChanging, or how many there are
  const tLoadedDescription* loaded = nullptr;
};

namespace {

constexpr std::int32_t kFree = 0;
constexpr std::int32_t kChanging = -1;  // one thread fills or empties the place

constinit tDescriptionPlace places[tDescriptionUse::kMostShared];
constinit std::atomic<tDescriptionPlace*> latest{nullptr};
constinit std::atomic<tDescriptionPlace*> behindUsed{
    places};  // no place from here on was ever used

void noteUsed(tDescriptionPlace& place) {
  tDescriptionPlace* known = behindUsed.load(std::memory_order_relaxed);
  while (known <= &place &&
         !behindUsed.compare_exchange_weak(known, &place + 1, std::memory_order_relaxed)) {
  }
}

}  // namespace

tLoadedDescription::tLoadedDescription(tDescriptionTexts texts, const tDescriptionKey& digests)
    : key(digests) {
  // What is not loaded has no texts that a refusal could refer to on its way out.
  const auto require = [](const tResult<>& done) {
    if (!done) raise(done.refusal());
  };
  // Each file is mapped while it is still at hand for the processor.
  files.pxiSys.load(std::move(texts.pxiSys));
  require(mapClassic());
  files.pxieSys.load(std::move(texts.pxieSys));
  require(mapExpress());
}

tResult<> tLoadedDescription::mapClassic() {
  return files.pxiSysChassisNumbers().then(
      [this](tNumbers chassis) { return devices.enterClassic(files.pxiSys, std::move(chassis)); });
}

tResult<> tLoadedDescription::mapExpress() {
  return files.pxieSysChassisNumbers().then(
      [this](tNumbers chassis) { return devices.enterExpress(files.pxieSys, std::move(chassis)); });
}

tDescriptionUse tDescriptionUse::ofLatest() {
  tDescriptionPlace* const place = latest.load(std::memory_order_relaxed);
  return place ? join(*place) : tDescriptionUse();
}

tDescriptionUse tDescriptionUse::of(tDescriptionTexts texts) {
  const bool isShared = tContentDigester::isReady();
  tDescriptionKey key;
  if (isShared) {
    key = {texts.pxiSys.digest(), texts.pxieSys.digest()};
    if (tDescriptionUse found = find(key)) return found;
  }
  tDescriptionUse made(new tLoadedDescription(std::move(texts), key), nullptr);
  if (!isShared) return made;
  // Threads that open at once have all found nothing. What another one has published meanwhile is
  // taken in the place of what was made; two that publish at once may still keep one each.
  if (tDescriptionUse found = find(key)) return found;
  made.publish();
  if (tDescriptionUse first = find(key)) return first;
  return made;
}

tDescriptionUse tDescriptionUse::find(const tDescriptionKey& key) {
  const tDescriptionPlace* const end = behindUsed.load(std::memory_order_relaxed);
  for (tDescriptionPlace* place = places; place != end; ++place) {
    tDescriptionUse use = join(*place);
    if (!use || use->key != key) continue;
    latest.store(place, std::memory_order_relaxed);
    return use;
  }
  return {};
}

// None when the place holds nothing. What it holds does not change while it has a user.
tDescriptionUse tDescriptionUse::join(tDescriptionPlace& place) {
  std::int32_t users = place.users.load(std::memory_order_seq_cst);
  while (users > kFree) {
    if (place.users.compare_exchange_weak(users, users + 1, std::memory_order_acquire)) {
      return {place.loaded, &place};
    }
  }
  return {};
}

void tDescriptionUse::publish() {
  for (tDescriptionPlace& place : places) {
    std::int32_t users = kFree;
    if (!place.users.compare_exchange_strong(users, kChanging, std::memory_order_acquire)) continue;
    noteUsed(place);
    place_ = &place;
    place.loaded = loaded_;
    // Ahead of the look for others that follows, as another thread sees the two.
    place.users.store(1, std::memory_order_seq_cst);
    latest.store(&place, std::memory_order_relaxed);
    return;
  }
}

tDescriptionUse::~tDescriptionUse() {
  if (!place_) {
    delete loaded_;
    return;
  }
  std::int32_t users = place_->users.load(std::memory_order_relaxed);
  while (!place_->users.compare_exchange_weak(users, users == 1 ? kChanging : users - 1,
                                              std::memory_order_acq_rel)) {
  }
  if (users != 1) return;
  delete loaded_;
  place_->users.store(kFree, std::memory_order_release);
}

}  // namespace varmex
