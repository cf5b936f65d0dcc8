#include "classify/pattern_search.h"

#include <algorithm>
#include <bit>

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

PatternSearch::State PatternSearch::child(State state, uint8_t edge) const {
  auto child = nodes_[state].firstChild;
  while (child != 0 && nodes_[child].edge != edge) child = nodes_[child].nextSibling;
  return child;
}

PatternSearch::State PatternSearch::makeChild(State state, uint8_t edge) {
  if (const auto known = child(state, edge); known != 0) return known;
  const auto made = static_cast<State>(nodes_.size());
  nodes_.push_back({.nextSibling = nodes_[state].firstChild, .edge = edge});
  nodes_[state].firstChild = made;
  atState_.emplace_back();
  return made;
}

void PatternSearch::build() {
  // Capitals of ASCII take the class of their small letter, so that plain text needs no
  // lower-casing.
  for (char c = 'A'; c <= 'Z'; ++c) classOf_.at(byteOf(c)) = classOf_.at(byteOf(c) | 0x20);

  nodes_.assign(1, {});
  atState_.assign(1, {});
  for (const auto& pattern : patterns_) makeChild(0, classOf_.at(byteOf(pattern.text.front())));
  rows_ = static_cast<State>(nodes_.size());
  for (const auto& [text, found] : patterns_) {
    State state = 0;
    for (const char c : text) state = makeChild(state, classOf_.at(byteOf(c)));
    atState_[state].merge(found);
  }
  patterns_.clear();

  // After one byte the only suffix is nothing: where no child is, the first row tells.
  rowBits_ = static_cast<uint32_t>(std::bit_width(classes_ - 1));
  table_.resize(std::size_t{rows_} << rowBits_);
  for (State state = 0; state < rows_; ++state) {
    auto* row = &table_[std::size_t{state} << rowBits_];
    std::copy_n(table_.begin(), classes_, row);
    for (auto child = nodes_[state].firstChild; child != 0; child = nodes_[child].nextSibling) {
      row[nodes_[child].edge] = child;
    }
  }

  // Breadth first, so that a suffix is known before those that it is a suffix of.
  std::vector<State> queue{0};
  queue.reserve(nodes_.size());
  for (std::size_t i = 0; i < queue.size(); ++i) {
    const auto state = queue[i];
    for (auto child = nodes_[state].firstChild; child != 0; child = nodes_[child].nextSibling) {
      auto& node = nodes_[child];
      if (state != 0) node.suffix = next(nodes_[state].suffix, node.edge);
      atState_[child].merge(atState_[node.suffix]);
      node.finds = atState_[child].any();
      queue.push_back(child);
    }
  }
}

PatternSearch::State PatternSearch::next(State state, uint8_t edge) const {
  while (state >= rows_) {
    if (const auto longer = child(state, edge); longer != 0) return longer;
    state = nodes_[state].suffix;
  }
  return table_[(std::size_t{state} << rowBits_) + edge];
}

PatternSearch::Found PatternSearch::search(std::string_view text) const {
  if (nodes_.size() <= 1) return {};  // no pattern at all
  return isAscii(text) ? searchBytes(text) : searchBytes(lowerCase(text));
}

PatternSearch::Found PatternSearch::searchBytes(std::string_view lowered) const {
  Found found;
  State state = 0;
  for (const char c : lowered) {
    const auto edge = classOf_[byteOf(c)];
    state = state < rows_ ? table_[(std::size_t{state} << rowBits_) + edge] : next(state, edge);
    if (nodes_[state].finds) found.merge(atState_[state]);
  }
  return found;
}

}  // namespace orvanta
