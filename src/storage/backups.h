// The store's backups: made, kept for a while, erased from.
#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <stop_token>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "base/log.h"
#include "storage/data_location.h"
#include "storage/erasure.h"
#include "storage/store_copy.h"

namespace orvanta {

struct Backup {
  std::filesystem::path file;
  double time = 0;  ///< Unix seconds
  uint64_t bytes = 0;
};

/// What became of the backups from which something was to be erased.
struct ErasedBackups {
  int rewritten = 0;
  int removed = 0;  ///< could not be rewritten
  /// Could be neither rewritten nor removed: they still hold it.
  std::vector<std::filesystem::path> left;
};

/// The backups in one folder, which only the user may enter; files that are not ours are passed
/// over. One process at a time makes and removes them, the holder of the DataLock. May be called
/// from any thread; what changes the folder waits for what else does, which may take a minute.
class Backups {
 public:
  struct Surroundings {
    Log log = systemLog;
    Calendar calendar;
    FreeSpace freeSpace = orvanta::freeSpace;
  };

  /// The folder is made with the first backup.
  explicit Backups(std::filesystem::path folder);
  Backups(std::filesystem::path folder, Surroundings surroundings);

  /// "sauvegardes" beside the store.
  static std::filesystem::path folderOf(const DataLocation& where);

  /// Newest first.
  std::vector<Backup> list() const;

  /// Whether a backup is to be made of a store of so many bytes: none of today yet, or for one
  /// above 100 MB none of the last seven days. A backup of the future, made when the clock was
  /// wrong, does not count. `now` in Unix seconds.
  bool due(double now, uint64_t storeBytes) const;

  /// Makes one now, see copyStore(); temporaries of a killed one are removed first. Before a change
  /// of the schema too.
  CopyResult make(const std::filesystem::path& store, double now, const std::stop_token& stop = {});

  /// Removes all but the newest of each of the last three days and of the last four weeks that have
  /// one. Of those, what is older than the newest good one: before it removes anything it makes
  /// sure that a newer one is whole.
  void prune(double now);

  /// Erases from every backup, down to its unused bytes. One that cannot be rewritten is removed
  /// rather than left. To be repeated when it was cut short: a kill leaves it begun.
  ErasedBackups apply(const Erasure& erasure);

 private:
  bool prepareFolder() const;
  void removeUnfinished() const;
  std::filesystem::path newName(double now) const;
  bool remove(const Backup& backup, const char* why) const;

  std::filesystem::path folder_;
  Surroundings surroundings_;
  std::mutex mutex_;                // held while the folder is changed
  std::filesystem::path lastMade_;  // is whole
};

/// Erases from one file that nobody has open, down to its unused bytes. False when that failed; the
/// file may still hold it then.
bool eraseFromCopy(const std::filesystem::path& file, const Erasure& erasure);

}  // namespace orvanta
