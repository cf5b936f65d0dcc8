// Sums by key that remember the order in which the keys came, so that equal sums are always listed
// in the same order.
#pragma once

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "base/string_pool.h"

namespace orvanta {

/// For texts of one pool.
struct TextHash {
  std::size_t operator()(Text text) const { return text ? text.id() + std::size_t{1} : 0; }
};

/// An insertion-ordered map to entries that hold their `key` and `seconds`, and what else is
/// summed.
template <class Entry, class Hash = std::hash<decltype(Entry::key)>>
class Tally {
 public:
  using Key = decltype(Entry::key);

  /// The entry of `key`, made when missing. Valid until the next one is made.
  Entry& operator[](const Key& key) { return entries_[placeOf(key)]; }

  /// The number of that entry, for at().
  uint32_t placeOf(const Key& key) {
    // What came last comes again more often than not.
    if (last_ >= entries_.size() || !(entries_[last_].key == key)) last_ = find(key);
    return last_;
  }
  Entry& at(uint32_t place) { return entries_[place]; }

  const std::vector<Entry>& entries() const { return entries_; }

  /// The entries, those with the most seconds first; at most `most`. Valid as long as the tally
  /// stays as it is.
  std::vector<const Entry*> bySeconds(std::size_t most = SIZE_MAX) const {
    std::vector<const Entry*> sorted;
    sorted.reserve(entries_.size());
    for (const auto& entry : entries_) sorted.push_back(&entry);
    most = std::min(most, sorted.size());
    // Of equal seconds the first comes first.
    std::partial_sort(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(most),
                      sorted.end(), [](const Entry* a, const Entry* b) {
                        return a->seconds != b->seconds ? a->seconds > b->seconds : a < b;
                      });
    sorted.resize(most);
    return sorted;
  }

 private:
  // Most tallies are of a handful of categories: looking through them is quicker than hashing.
  static constexpr std::size_t kFew = 8;

  uint32_t find(const Key& key) {
    if (index_.empty()) {
      for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].key == key) return static_cast<uint32_t>(i);
      }
      if (entries_.size() < kFew) return add(key);
      for (std::size_t i = 0; i < entries_.size(); ++i) {
        index_.try_emplace(entries_[i].key, static_cast<uint32_t>(i));
      }
    }
    const auto [at, isNew] = index_.try_emplace(key, static_cast<uint32_t>(entries_.size()));
    return isNew ? add(key) : at->second;
  }

  uint32_t add(const Key& key) {
    entries_.emplace_back().key = key;
    return static_cast<uint32_t>(entries_.size() - 1);
  }

  std::vector<Entry> entries_;
  uint32_t last_ = 0;                                     // the place asked for last
  boost::unordered_flat_map<Key, uint32_t, Hash> index_;  // empty while there are few
};

/// Seconds under one text.
struct TextSeconds {
  Text key;
  double seconds = 0;
};
using TextTally = Tally<TextSeconds, TextHash>;

}  // namespace orvanta
