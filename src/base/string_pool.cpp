#include "base/string_pool.h"

#include <cstring>

namespace orvanta {

Text StringPool::intern(std::string_view text) {
  if (const auto found = index_.find(text); found != index_.end()) return Text(found->second);
  auto* bytes = static_cast<char*>(bytes_.allocate(text.size() + 1, 1));
  std::memcpy(bytes, text.data(), text.size());
  const auto& entry = entries_.emplace_back(
      Text::Entry{{bytes, text.size()}, static_cast<uint32_t>(entries_.size())});
  index_.emplace(entry.text, &entry);
  return Text(&entry);
}

}  // namespace orvanta
