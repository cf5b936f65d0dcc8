#include "base/string_pool.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstring>
#include <new>
#include <random>

namespace orvanta {

Text TextSlot::hold(std::string_view text) {
  constexpr auto kEntry = sizeof(Text::Entry);
  const auto entries = 1 + (text.size() + kEntry - 1) / kEntry;
  if (room_.size() < entries) room_.resize(2 * entries);
  room_.front().size = static_cast<uint32_t>(text.size());
  std::memcpy(static_cast<void*>(room_.data() + 1), text.data(), text.size());
  return Text(room_.data());
}

StringPool::StringPool() {
  constexpr std::size_t kUsual = 512;  // growing costs more than the room
  index_.reserve(kUsual);
}

uint64_t StringPool::hashOf(std::string_view text) {
  static const XXH64_hash_t kSeed = std::random_device()();
  return XXH3_64bits_withSeed(text.data(), text.size(), kSeed);
}

Text StringPool::intern(std::string_view text) {
  const Key key{text, hashOf(text)};
  if (const auto found = index_.find(key); found != index_.end()) return Text(*found);
  auto* memory = memory_.allocate(sizeof(Entry) + text.size(), alignof(Entry));
  const auto* entry = ::new (memory) Entry{key.hash, size(), static_cast<uint32_t>(text.size())};
  std::memcpy(static_cast<char*>(memory) + sizeof(Entry), text.data(), text.size());
  index_.insert(entry);
  return Text(entry);
}

}  // namespace orvanta
