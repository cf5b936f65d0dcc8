// The write-ahead log beside a store file, read without SQLite's help.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace orvanta {

/// What a write-ahead log says.
struct LogFrames {
  std::size_t pageSize = 0;                       ///< 0 when the log's header is no good
  std::unordered_map<uint32_t, uint64_t> newest;  ///< page to the offset of its last version
  uint32_t pages = 0;                             ///< of the database after the last commit
  /// Something was written that cannot be read any more: the header is no good, or beyond what is
  /// good there is more that was written with it.
  bool cut = false;
};

/// Reads an open log as far as its checksums are right; only what was committed counts.
LogFrames readLogFrames(int file);

}  // namespace orvanta
