// A file system that fails SQLite when a test wants it to.
#pragma once

#include <cstdint>

namespace orvanta::test {

enum class Fault {
  Full,        ///< nothing grows: SQLITE_FULL
  WriteError,  ///< writing, syncing, making and deleting files: SQLITE_IOERR
  ReadOnly,    ///< as if it had been mounted read-only
  ReadError,   ///< reading
  Kill,        ///< the process ends by SIGKILL
  Torn,        ///< the same after half of what was to be written
};

/// The default file system of SQLite in this process: the real one while nothing is to fail, but
/// for syncs, which are only counted. What counts as a write is a write, a truncation, a sync, the
/// making or deleting of a file, and growing the index of the write-ahead log. Any thread.
class FaultVfs {
 public:
  static FaultVfs& instance();

  /// Begins to count; the `nth` write from now on and all that follow fail.
  void fail(Fault fault, int nth = 1);
  /// All goes well again.
  void lift();

  /// Since fail(), or count().
  void count();
  int writes() const;
  int64_t bytes() const;
  bool struck() const;
};

/// Lasts as long as the object.
struct Failing {
  explicit Failing(Fault fault, int nth = 1) { FaultVfs::instance().fail(fault, nth); }
  ~Failing() { FaultVfs::instance().lift(); }
  Failing(const Failing&) = delete;
  Failing& operator=(const Failing&) = delete;
};

}  // namespace orvanta::test
