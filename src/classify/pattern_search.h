// Finds which of many patterns occur in a text, in one pass over the text.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// The multiple-string search of Aho and Corasick ("Efficient string matching", CACM 18, 1975). It
/// does not tell where a pattern occurs but the least of the ranks of those that do, of each of
/// three kinds. Immutable once built; then any thread may search.
///
/// A text is nearly always at most one byte into some pattern, so that the states of no byte and of
/// one know where every byte leads. The others know their children and fall back on their suffix:
/// a table of them all would take longer to fill than a day's texts take to search.
class PatternSearch {
 public:
  using Rank = uint32_t;
  static constexpr Rank kNone = UINT32_MAX;

  /// The least rank of each kind, kNone where no pattern of that kind was found.
  struct Found {
    Rank category = kNone;
    Rank project = kNone;
    Rank keyword = kNone;

    void merge(const Found& other);
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
    State suffix = 0;  // the state of the longest proper suffix
    uint8_t edge = 0;  // class of the byte that leads here
    bool finds = false;
  };

  State child(State state, uint8_t edge) const;
  State makeChild(State state, uint8_t edge);
  State next(State state, uint8_t edge) const;
  Found searchBytes(std::string_view lowered) const;

  struct Pattern {
    std::string text;
    Found found;
  };
  std::vector<Pattern> patterns_;       // until built
  std::array<uint8_t, 256> classOf_{};  // 0 for every byte that no pattern has
  uint32_t classes_ = 1;
  std::vector<Node> nodes_;     // by state: the first rows_ of at most one byte
  std::vector<Found> atState_;  // what is found on arrival
  State rows_ = 0;
  uint32_t rowBits_ = 0;      // a row has 2 to this power places
  std::vector<State> table_;  // where the first rows_ states lead, by state and class
};

}  // namespace orvanta
