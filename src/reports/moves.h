// From what to what spans are moved.
#pragma once

#include <cstdint>
#include <optional>

#include "reports/tally.h"

namespace orvanta {

/// How a span's classification changes.
struct Move {
  Text fromCategory;
  Text toCategory;
  std::optional<int64_t> fromProject;
  std::optional<int64_t> toProject;

  friend bool operator==(const Move&, const Move&) = default;
};
struct MoveHash {
  std::size_t operator()(const Move& move) const {
    constexpr std::size_t kOdd = 1000003;
    std::size_t hash = 0;
    for (const auto text : {move.fromCategory, move.toCategory}) {
      hash = hash * kOdd + TextHash()(text);
    }
    for (const auto& project : {move.fromProject, move.toProject}) {
      hash = hash * kOdd + static_cast<std::size_t>(project.value_or(-1));
    }
    return hash;
  }
};
struct MoveTotal {
  Move key;
  double seconds = 0;
  int64_t spans = 0;
};
using MoveTally = Tally<MoveTotal, MoveHash>;

}  // namespace orvanta
