// Which rows a recorded difference is about.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvanta {

/// What a changeset (see ChangeRecorder) touches.
struct Touched {
  std::vector<int64_t> spans;     ///< ids that were there before, changed or deleted
  std::vector<int64_t> newSpans;  ///< ids of those that it adds
  bool sorting = false;           ///< whether it touches rules or projects
};

/// Of what is no changeset, what could be read.
Touched touchedBy(const std::string& changeset);

}  // namespace orvanta
