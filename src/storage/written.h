// How a write to the store ended.
#pragma once

#include <sqlite3.h>

#include <cstdint>

namespace orvanta {

/// Stored, refused because such a row exists already, or failed. Nobody may drop it: what could not
/// be stored must not be called saved. Where the caller cannot do anything about it, for the store
/// tells of it itself and the next write makes up for it, forget() says so.
class [[nodiscard]] Written {
 public:
  /// `rowId` is that of the last row inserted, meaningful after INSERT only.
  static Written stored(int64_t rowId = 0) { return Written(SQLITE_OK, rowId); }
  /// With SQLite's extended error code.
  static Written failed(int code) { return Written(code != SQLITE_OK ? code : SQLITE_ERROR, -1); }

  explicit operator bool() const { return code_ == SQLITE_OK; }
  /// A row with this key or this unique name is there; nothing is wrong with the store.
  bool conflict() const {
    return code_ == SQLITE_CONSTRAINT_UNIQUE || code_ == SQLITE_CONSTRAINT_PRIMARYKEY;
  }
  /// -1 when nothing was stored.
  int64_t rowId() const { return rowId_; }
  /// SQLite's extended error code; SQLITE_OK when stored.
  int code() const { return code_; }

  void forget() const {}

 private:
  Written(int code, int64_t rowId) : code_(code), rowId_(rowId) {}
  int code_;
  int64_t rowId_;
};

}  // namespace orvanta
