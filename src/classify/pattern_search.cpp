#include "classify/pattern_search.h"

#include <algorithm>
#include <cstring>

#include "base/text.h"

namespace orvanta {

void PatternSearch::add(std::string_view pattern, const Found& found) {
  if (pattern.empty()) return;
  if (pattern.size() > kDeepest) {
    long_.push_back({std::string(pattern), found});
    return;
  }
  patterns_.push_back({std::string(pattern), found});
  for (const char c : pattern) {
    auto& known = classOf_[static_cast<uint8_t>(c)];
    if (known == 0) known = static_cast<uint8_t>(classes_++);
  }
}

PatternSearch::State PatternSearch::child(State state, uint8_t edge) const {
  auto child = nodes_[state].firstChild;
  while (child != 0 && nodes_[child].edge != edge) child = nodes_[child].nextSibling;
  return child;
}

PatternSearch::State PatternSearch::makeChild(State state, uint8_t edge) {
  const auto known = state == 0 ? first_[edge] : child(state, edge);
  if (known != 0) return known;
  const auto made = static_cast<State>(nodes_.size());
  nodes_.push_back({.nextSibling = nodes_[state].firstChild, .edge = edge});
  nodes_[state].firstChild = made;
  if (state == 0) first_[edge] = made;
  atState_.emplace_back();
  return made;
}

void PatternSearch::build() {
  std::ranges::sort(long_, {}, [](const auto& pattern) { return pattern.text.size(); });
  // Capitals of ASCII take the class of their small letter, so that plain text needs no
  // lower-casing.
  for (std::size_t c = 'A'; c <= 'Z'; ++c) classOf_[c] = classOf_[c | 0x20];

  first_.resize(classes_);
  nodes_.assign(1, {});
  atState_.assign(1, {});
  for (const auto& [text, found] : patterns_) {
    State state = 0;
    for (const char c : text) state = makeChild(state, classOf(c));
    nodes_[state].finds = true;
    atState_[state].merge(found);
    shortest_ = std::min(shortest_, text.size());
  }
  if (!patterns_.empty() && shortest_ >= kLookedAt) fillTable();
  patterns_ = {};
}

void PatternSearch::fillTable() {
  // A table that knows more than this sends the search astray too often.
  constexpr std::size_t kMost = kPlaces / 16;
  stride_ = std::clamp(kMost / patterns_.size(), std::size_t{1}, shortest_ - kLookedAt + 1);
  for (const auto& [text, found] : patterns_) {
    for (std::size_t at = 0; at < stride_; ++at) known_[placeOf(text.data() + at)] = true;
  }
}

PatternSearch::Found PatternSearch::search(std::string_view text) const {
  Found found;
  if (nodes_.size() > 1) {
    found = lowersLikeAscii(text) ? searchBytes(text) : searchBytes(lowerCase(text));
  }
  // A small letter takes at most twice the bytes of its capital.
  if (!long_.empty() && long_.front().text.size() <= 2 * text.size()) searchLong(text, found);
  return found;
}

// One by one: there are hardly any, and memmem's time does not grow with text times pattern.
void PatternSearch::searchLong(std::string_view text, Found& found) const {
  const auto lowered = lowerCase(text);
  for (const auto& [pattern, finds] : long_) {
    if (pattern.size() > lowered.size()) return;
    if (memmem(lowered.data(), lowered.size(), pattern.data(), pattern.size()) != nullptr) {
      found.merge(finds);
    }
  }
}

// What `lowered` begins with.
void PatternSearch::follow(std::string_view lowered, Found& found) const {
  auto state = first_[classOf(lowered.front())];
  for (std::size_t at = 1; state != 0; ++at) {
    if (nodes_[state].finds) found.merge(atState_[state]);
    if (at == lowered.size()) return;
    state = child(state, classOf(lowered[at]));
  }
}

PatternSearch::Found PatternSearch::searchBytes(std::string_view lowered) const {
  Found found;
  if (shortest_ < kLookedAt) {
    for (; !lowered.empty(); lowered.remove_prefix(1)) follow(lowered, found);
    return found;
  }
  for (std::size_t at = 0; at + kLookedAt <= lowered.size(); at += stride_) {
    if (!known_[placeOf(lowered.data() + at)]) [[likely]]
      continue;
    for (std::size_t before = 0; before < stride_ && before <= at; ++before) {
      follow(lowered.substr(at - before), found);
    }
  }
  return found;
}

}  // namespace orvanta
