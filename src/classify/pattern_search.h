// Finds which of many patterns occur in a text, in one pass over the text.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// The multiple-string search of Aho and Corasick ("Efficient string matching", CACM 18, 1975) as a
/// complete automaton. It does not tell where a pattern occurs but the least of the ranks of those
/// that do, of each of three kinds. Immutable once built; then any thread may search.
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
  using State = uint32_t;                    // where the state's row begins in next_
  static constexpr State kFinds = 1U << 31;  // in next_: the state found something

  Found searchBytes(std::string_view lowered) const;

  struct Pattern {
    std::string text;
    Found found;
  };
  std::vector<Pattern> patterns_;       // until built
  std::array<uint8_t, 256> classOf_{};  // 0 for every byte that no pattern has
  uint32_t classes_ = 1;
  std::vector<State> next_;  // by state and class
  std::vector<Found> atState_;
};

}  // namespace orvanta
