// Keeps a second tracker off the same data.
#pragma once

#include <optional>

#include "storage/data_location.h"

namespace orvanta {

/// A kernel lock (flock) on "orvanta.lock" beside the store: two trackers on one file would write
/// every second of the day twice. It is needed where there is no session bus to tell that the
/// program is already running. The kernel frees it when the process ends, however it ends. It lies
/// on network file systems that do not carry flock between machines: there two machines may each
/// hold it.
class DataLock {
 public:
  /// Absent when another process holds the lock. A lock file that cannot be made counts as taken by
  /// us: a read-only disk is no reason not to run. `inherited` is the file of a lock that this
  /// process held before it became another program image; it is taken over if it is the same lock.
  static std::optional<DataLock> take(const DataLocation& where, int inherited = -1);

  DataLock(DataLock&& other) noexcept;
  DataLock& operator=(DataLock&&) = delete;
  ~DataLock();

  /// Gives the lock's file away, still locked; -1 where there is none.
  int leave();

 private:
  explicit DataLock(int file) : file_(file) {}
  int file_;
};

}  // namespace orvanta
