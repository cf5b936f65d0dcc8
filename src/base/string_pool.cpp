#include "base/string_pool.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstring>
#include <new>

namespace orvanta {

StringPool::StringPool() {
  constexpr std::size_t kUsual = 4096;  // a week's worth; growing costs more than the room
  index_.reserve(kUsual);
}

Text StringPool::intern(std::string_view text) {
  const Key key{text, XXH3_64bits(text.data(), text.size())};
  if (const auto found = index_.find(key); found != index_.end()) return Text(*found);
  auto* memory = memory_.allocate(sizeof(Entry) + text.size(), alignof(Entry));
  const auto* entry = ::new (memory) Entry{key.hash, size(), static_cast<uint32_t>(text.size())};
  std::memcpy(static_cast<char*>(memory) + sizeof(Entry), text.data(), text.size());
  index_.insert(entry);
  return Text(entry);
}

}  // namespace orvanta
