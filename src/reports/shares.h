// Seconds by application or site, for many spans.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/string_pool.h"

namespace orvanta {

/// A tally by the texts of one pool, found by their numbers: nothing is hashed for a span.
template <class Total>
class Shares {
 public:
  /// The entry of `key`, made when missing. Valid until the next one is made.
  Total& operator[](Text key) {
    if (key.id() >= places_.size()) places_.resize(key.id() + std::size_t{64}, 0);
    auto& place = places_[key.id()];
    if (place == 0) {
      entries_.emplace_back().key = key;
      place = static_cast<uint32_t>(entries_.size());
    }
    return entries_[place - 1];
  }

  const std::vector<Total>& entries() const { return entries_; }

  /// As Tally::bySeconds.
  std::vector<const Total*> bySeconds() const {
    std::vector<const Total*> sorted;
    sorted.reserve(entries_.size());
    for (const auto& entry : entries_) sorted.push_back(&entry);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Total* a, const Total* b) { return a->seconds > b->seconds; });
    return sorted;
  }

 private:
  std::vector<Total> entries_;
  std::vector<uint32_t> places_;  // by text, one more than the index; 0 for none
};

}  // namespace orvanta
