// Finds which of many patterns occur in a text, whatever their number.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// Does not tell where a pattern occurs but the least of the ranks of those that do, of each of
/// three kinds. Immutable once built; then any thread may search.
///
/// At nearly every place of a text there is nothing of any pattern, which a table tells of three
/// bytes; where there may be, the tree of the patterns is followed. The longer the shortest pattern
/// is, the more places are passed over, as in Wu and Manber's search. No place waits for what was
/// found at the one before, so the processor looks at several at once; an automaton that never goes
/// back (Aho-Corasick) takes several times as long. Where a text is all beginnings of a pattern
/// ("xxxx…"), each place is followed as far as the tree is deep: a long pattern is not in it.
class PatternSearch {
 public:
  using Rank = uint32_t;
  static constexpr Rank kNone = UINT32_MAX;

  /// The least rank of each kind, kNone where no pattern of that kind was found.
  struct Found {
    Rank category = kNone;
    Rank project = kNone;
    Rank keyword = kNone;

    void merge(const Found& other) {
      category = std::min(category, other.category);
      project = std::min(project, other.project);
      keyword = std::min(keyword, other.keyword);
    }
    bool any() const { return (category & project & keyword) != kNone; }
  };

  /// `pattern` is lower-cased; an empty one is found nowhere.
  void add(std::string_view pattern, const Found& found);
  /// To be called once, after the last add().
  void build();

  /// What occurs in `text`, whose letters may have any case.
  Found search(std::string_view text) const;

 private:
  using State = uint32_t;  // 0, nothing read of any pattern, is no state's child: also "none"
  struct Node {
    State firstChild = 0;
    State nextSibling = 0;
    uint8_t edge = 0;  // class of the byte that leads here
    bool finds = false;
  };

  static constexpr uint32_t kPlaces = 4096;
  static constexpr std::size_t kLookedAt = 3;
  static constexpr std::size_t kDeepest = 256;  // bytes

  // Where the table tells of the three bytes from `at` on.
  uint32_t placeOf(const char* at) const {
    return ((static_cast<uint32_t>(classOf(at[0])) << 8) ^
            (static_cast<uint32_t>(classOf(at[1])) << 4) ^ classOf(at[2])) %
           kPlaces;
  }
  uint8_t classOf(char c) const { return classOf_[static_cast<uint8_t>(c)]; }
  State child(State state, uint8_t edge) const;
  State makeChild(State state, uint8_t edge);
  void fillTable();
  void follow(std::string_view lowered, Found& found) const;
  Found searchBytes(std::string_view lowered) const;
  void searchLong(std::string_view text, Found& found) const;

  struct Pattern {
    std::string text;
    Found found;
  };
  std::vector<Pattern> patterns_;       // until built
  std::vector<Pattern> long_;           // not in the tree; the shortest first
  std::array<uint8_t, 256> classOf_{};  // 0 for every byte that no pattern has
  uint32_t classes_ = 1;
  std::vector<Node> nodes_;     // by state
  std::vector<Found> atState_;  // what is found on arrival
  std::vector<State> first_;    // the state after one byte, by its class
  std::size_t shortest_ = SIZE_MAX;
  // Every how many bytes a text is looked at. What is seen there may be in the first so many
  // places of a pattern: the table knows the bytes of these.
  std::size_t stride_ = 1;
  std::array<bool, kPlaces> known_{};
};

}  // namespace orvanta
