// The store of one moment.
#pragma once

#include <mutex>

#include "storage/database.h"

namespace orvanta {

/// From its beginning to its end this thread's scans see one state of the store, whatever is
/// written meanwhile. Other threads' scans wait; writers do not, but the write-ahead log only grows
/// until it ends: it lasts as long as one report. One within another changes nothing. Where the
/// file cannot be opened a second time, each scan sees what is there when it begins.
class Snapshot {
 public:
  explicit Snapshot(Database& db);
  ~Snapshot();
  Snapshot(const Snapshot&) = delete;
  Snapshot& operator=(const Snapshot&) = delete;

 private:
  bool step(const char* sql);

  Database& db_;
  const std::lock_guard<std::recursive_mutex> lock_;
  bool open_ = false;
};

}  // namespace orvanta
