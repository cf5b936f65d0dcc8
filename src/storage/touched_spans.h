// Which rows a recorded difference is about.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvanta {

/// What a changeset (see ChangeRecorder) touches.
struct TouchedSpans {
  std::vector<int64_t> known;  ///< ids that were there before, changed or deleted
  std::vector<int64_t> added;  ///< ids of those that it adds
  bool sorting = false;        ///< whether it touches rules or projects
};

/// Of what is no changeset, what could be read.
TouchedSpans touchedSpans(const std::string& changeset);

}  // namespace orvanta
