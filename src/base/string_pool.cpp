#include "base/string_pool.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <random>

namespace orvanta {

StringPool::StringPool() {
  constexpr std::size_t kUsual = 512;  // growing costs more than the room
  index_.reserve(kUsual);
}

uint64_t StringPool::hashOf(std::string_view text) {
  static const XXH64_hash_t kSeed = std::random_device()();
  return XXH3_64bits_withSeed(text.data(), text.size(), kSeed);
}

Text StringPool::intern(std::string_view text) {
  if (const auto found = index_.find(text); found != index_.end()) return *found;
  auto* memory = static_cast<char*>(memory_.allocate(text.size(), 1));
  std::copy(text.begin(), text.end(), memory);
  return *index_.insert(Text({memory, text.size()}, size())).first;
}

}  // namespace orvanta
