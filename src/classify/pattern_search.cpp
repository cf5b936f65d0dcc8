#include "classify/pattern_search.h"

#include <algorithm>

#include "base/text.h"

namespace orvanta {
namespace {

uint8_t byteOf(char c) {
  return static_cast<uint8_t>(c);
}

}  // namespace

void PatternSearch::Found::merge(const Found& other) {
  category = std::min(category, other.category);
  project = std::min(project, other.project);
  keyword = std::min(keyword, other.keyword);
}

void PatternSearch::add(std::string_view pattern, const Found& found) {
  if (pattern.empty()) return;
  patterns_.push_back({std::string(pattern), found});
  for (const char c : pattern) {
    auto& known = classOf_.at(byteOf(c));
    if (known == 0) known = static_cast<uint8_t>(classes_++);
  }
}

void PatternSearch::build() {
  // Capitals of ASCII take the class of their small letter, so that plain text needs no
  // lower-casing.
  for (char c = 'A'; c <= 'Z'; ++c) classOf_.at(byteOf(c)) = classOf_.at(byteOf(c) | 0x20);

  // The trie of the patterns. 0 is the root and, since nothing leads back to it, also "none".
  struct Node {
    uint32_t firstChild = 0;
    uint32_t nextSibling = 0;
    uint8_t edge = 0;     // class of the byte that leads here
    uint32_t suffix = 0;  // node of the longest proper suffix that is in the trie
  };
  std::vector<Node> trie(1);
  atState_.assign(1, {});
  for (const auto& [text, found] : patterns_) {
    uint32_t node = 0;
    for (const char c : text) {
      const auto edge = classOf_.at(byteOf(c));
      auto child = trie[node].firstChild;
      while (child != 0 && trie[child].edge != edge) child = trie[child].nextSibling;
      if (child == 0) {
        child = static_cast<uint32_t>(trie.size());
        trie.push_back({.nextSibling = trie[node].firstChild, .edge = edge});
        trie[node].firstChild = child;
        atState_.emplace_back();
      }
      node = child;
    }
    atState_[node].merge(found);
  }
  patterns_.clear();

  // Breadth first: where a node has no child of its own it goes where its suffix goes, and it finds
  // what its suffix finds.
  next_.assign(trie.size() * classes_, 0);
  std::vector<uint32_t> queue{0};
  queue.reserve(trie.size());
  for (std::size_t i = 0; i < queue.size(); ++i) {
    const auto node = queue[i];
    auto* row = &next_[std::size_t{node} * classes_];
    if (node != 0) std::copy_n(&next_[std::size_t{trie[node].suffix} * classes_], classes_, row);
    for (auto child = trie[node].firstChild; child != 0; child = trie[child].nextSibling) {
      auto& next = row[trie[child].edge];
      trie[child].suffix = (next & ~kFinds) / classes_;
      atState_[child].merge(atState_[trie[child].suffix]);
      next = child * classes_ | (atState_[child].any() ? kFinds : 0);
      queue.push_back(child);
    }
  }
}

PatternSearch::Found PatternSearch::search(std::string_view text) const {
  if (next_.size() <= classes_) return {};  // no pattern at all
  return isAscii(text) ? searchBytes(text) : searchBytes(lowerCase(text));
}

PatternSearch::Found PatternSearch::searchBytes(std::string_view lowered) const {
  Found found;
  State state = 0;
  for (const char c : lowered) {
    const State next = next_[state + classOf_[byteOf(c)]];
    state = next & ~kFinds;
    if (next != state) found.merge(atState_[state / classes_]);
  }
  return found;
}

}  // namespace orvanta
