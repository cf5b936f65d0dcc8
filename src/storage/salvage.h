// What a damaged store still holds, in a new file.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "base/calendar.h"

namespace orvanta {

struct SalvageReport {
  struct Table {
    std::string name;
    int64_t read = 0;        ///< rows that came from the damaged file
    int64_t fromBackup = 0;  ///< rows that it lacked and the backup had
    int64_t rejected = 0;    ///< rows that made no sense, as a span that ends before it starts
    bool whole = false;      ///< every row was read, as far as anybody can tell
  };

  bool made = false;  ///< the new file is complete and on the disk; nothing is left of it otherwise
  std::vector<Table> tables;
  /// The end of the log was damaged: what was written last may be missing without a trace.
  bool logCut = false;
  /// Spans that the damaged file names in an index, but that neither it nor the backup holds any
  /// more. Others may be missing too.
  int64_t spansLost = 0;
  std::vector<TimeRange> lostTime;  ///< when these were, Unix seconds, in order
  /// In French, with full stop: what was saved and what was not; or why nothing was made.
  std::string sentence;

  /// Nothing is missing, as far as anybody can tell.
  bool whole() const;
};

struct SalvageOptions {
  /// Creates the tables of a store in an empty file. True on success.
  std::function<bool(sqlite3* connection)> prepareSchema;
  std::optional<std::filesystem::path> newestBackup;
  Calendar calendar;  ///< for the dates in the sentence
  std::stop_token stop;
};

/// Copies what can be read of the damaged file, and of its write-ahead log, into the new file
/// `fresh`, which must not exist: what SQLite can read from both ends of each table, row by row in
/// what lies between, and the rows on intact pages that no path leads to any more, even when the
/// file's header is gone. Tables that were not read whole are filled from the newest backup: with
/// rows whose id is free, for spans also only where no span is. The damaged file stays byte for
/// byte as it is; nobody, this process included, may have it open. Needs room for two copies beside
/// `fresh`. Blocks the caller for seconds per 100 MB; may be called from any thread.
SalvageReport salvage(const std::filesystem::path& damaged, const std::filesystem::path& fresh,
                      const SalvageOptions& options);

}  // namespace orvanta
