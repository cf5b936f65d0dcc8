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
struct FaultVfs {
  /// Begins to count; the `nth` write from now on and all that follow fail.
  static void fail(Fault fault, int nth = 1);
  /// All goes well again.
  static void lift();

  /// Since fail(), or count().
  static void count();
  static int writes();
  static int64_t bytes();
  static bool struck();
};

/// Lasts as long as the object.
struct Failing {
  explicit Failing(Fault fault, int nth = 1) { FaultVfs::fail(fault, nth); }
  ~Failing() { FaultVfs::lift(); }
  Failing(const Failing&) = delete;
  Failing& operator=(const Failing&) = delete;
};

}  // namespace orvanta::test
