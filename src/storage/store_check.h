// Whether a store file is whole, and what it holds.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvanta {

/// What a store holds.
struct StoreFacts {
  uint64_t bytes = 0;  ///< of the file and of what waits beside it to be written into it
  int64_t spans = 0;
  std::optional<double> first;  ///< start of the earliest span, Unix seconds
  std::optional<double> last;   ///< end of the last one
  int64_t projects = 0;
  int64_t rules = 0;
};

struct CheckOptions {
  /// Also compares every index with its table: a few times as long.
  bool full = false;
  std::stop_token stop;
  /// Ends the check unfinished after this time.
  std::optional<std::chrono::milliseconds> budget;
};

struct StoreCheck {
  bool finished = false;              ///< false when stopped or out of time: nothing is known then
  bool whole = false;                 ///< finished, and without a problem
  std::vector<std::string> problems;  ///< French sentences without full stop, at most some dozens
  StoreFacts facts;
};

/// Checks a store file, or a copy of one, without changing it or making anything beside it; see
/// FileConnection::reading. May be called from any thread and takes seconds for years of spans.
StoreCheck checkStore(const std::filesystem::path& file, const CheckOptions& options = {});

/// What a store holds, unchecked; as far as it can be read.
StoreFacts readStoreFacts(const std::filesystem::path& file);

}  // namespace orvanta
