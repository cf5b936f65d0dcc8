#include "base/string_pool.h"

#include <cstring>
#include <functional>
#include <new>

namespace orvanta {

Text StringPool::intern(std::string_view text) {
  const Key key{text, std::hash<std::string_view>()(text)};
  if (const auto found = index_.find(key); found != index_.end()) return Text(*found);
  auto* memory = memory_.allocate(sizeof(Entry) + text.size(), alignof(Entry));
  const auto* entry = ::new (memory) Entry{key.hash, size(), static_cast<uint32_t>(text.size())};
  std::memcpy(static_cast<char*>(memory) + sizeof(Entry), text.data(), text.size());
  index_.insert(entry);
  return Text(entry);
}

}  // namespace orvanta
