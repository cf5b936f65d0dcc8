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

  // The trie; 0 is the root and stands for "no such child" too, since no edge leads to it.
  next_.assign(classes_, 0);
  atState_.assign(1, {});
  for (const auto& [text, found] : patterns_) {
    State state = 0;
    for (const char c : text) {
      const auto edge = state + classOf_.at(byteOf(c));
      if (next_[edge] == 0) {
        next_[edge] = static_cast<State>(next_.size());
        next_.resize(next_.size() + classes_, 0);
        atState_.emplace_back();
      }
      state = next_[edge];
    }
    foundAt(state).merge(found);
  }
  patterns_.clear();

  // Breadth first: where a state has no child of its own it goes where its longest proper suffix
  // goes, and it finds what that suffix finds.
  std::vector<State> suffix(atState_.size(), 0);
  std::vector<State> queue{0};
  for (std::size_t i = 0; i < queue.size(); ++i) {
    const State state = queue[i];
    for (uint32_t c = 1; c < classes_; ++c) {
      auto& child = next_[state + c];
      const State fallback = state == 0 ? 0 : next_[suffix[state / classes_] + c];
      if (child == 0) {
        child = fallback;
      } else {
        suffix[child / classes_] = fallback;
        foundAt(child).merge(foundAt(fallback));
        queue.push_back(child);
      }
    }
  }
  for (auto& next : next_) {
    if (foundAt(next).any()) next |= kFinds;
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
