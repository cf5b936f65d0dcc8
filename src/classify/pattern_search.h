// Finds which of many patterns occur in a text, whatever their number.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// Does not tell where a pattern occurs but the least of the ranks of those that do, of each of
/// three kinds. Immutable once built; then any thread may search.
///
/// At nearly every place of a text no pattern begins, which a table tells of its next three bytes;
/// where one may, the tree of the patterns is followed. No place waits for what was found at the
/// one before, so the processor looks at several at once; an automaton that never goes back
/// (Aho-Corasick) takes several times as long.
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
    uint8_t edge = 0;  // class of the byte that leads here
    bool finds = false;
  };

  static constexpr uint32_t kPlaces = 4096;
  static constexpr std::size_t kLookedAt = 3;

  // What the last three bytes' classes make, modulo kPlaces: the older ones are pushed out.
  static uint32_t pushed(uint32_t place, uint8_t byteClass) { return (place << 4) ^ byteClass; }
  uint8_t classOf(char c) const { return classOf_[static_cast<uint8_t>(c)]; }
  State child(State state, uint8_t edge) const;
  State makeChild(State state, uint8_t edge);
  void follow(std::string_view lowered, Found& found) const;
  Found searchBytes(std::string_view lowered) const;

  struct Pattern {
    std::string text;
    Found found;
  };
  std::vector<Pattern> patterns_;       // until built
  std::array<uint8_t, 256> classOf_{};  // 0 for every byte that no pattern has
  uint32_t classes_ = 1;
  std::vector<Node> nodes_;     // by state
  std::vector<Found> atState_;  // what is found on arrival
  std::vector<State> first_;    // the state after one byte, by its class
  std::size_t shortest_ = SIZE_MAX;
  std::array<bool, kPlaces>
      begins_{};  // a pattern, by what pushed() makes of its first three bytes
};

}  // namespace orvanta
