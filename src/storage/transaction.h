// Writes that belong together.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string_view>

#include "storage/database.h"

namespace orvanta {

/// How long a transaction waits to begin.
enum class Patience {
  None,   ///< not at all, not even for another thread of ours: a tick comes on time
  Usual,  ///< two seconds for another program that holds the file
};

/// All of its statements take effect with commit(), or none: it is rolled back unless committed.
/// From its beginning to its end no other thread's statement slips in, and what this thread reads
/// by Database::each is what it has written. After a failure, that to begin included, further
/// statements do nothing and commit() yields the failure, so that only its answer need be looked
/// at. A transaction within another ends with it. Used by one thread, which does not wait for
/// another meanwhile.
class Transaction {
 public:
  explicit Transaction(Database& db, Patience patience = Patience::Usual);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  /// Nothing has failed so far.
  explicit operator bool() const { return bool{result_}; }

  /// The id of the row inserted last, -1 after a failure.
  int64_t run(std::string_view sql, const Args& args = {});
  /// Several statements without parameters.
  void exec(const std::string& sql);
  /// Rows that the last statement inserted, changed or deleted.
  int64_t changes() const { return changes_; }
  /// As Database::each; what cannot be read is a failure of the transaction.
  void each(std::string_view sql, const Args& args,
            const std::function<void(const Cursor&)>& visit);

  /// Lets it fail for a reason of the caller's: an SQLite code.
  void fail(int code) { result_ = Written::failed(code); }

  Written commit();

  /// For what SQLite can do besides statements; touched() says that it has changed something.
  sqlite3* connection() { return db_.connection_.get(); }
  void touched() { wrote_ = true; }

  Database& database() { return db_; }

 private:
  void begin();
  Written beginOnce();
  Written step(const char* sql);
  bool intact();
  void end();

  Database& db_;
  const Patience patience_;
  std::unique_lock<std::recursive_mutex> lock_;
  Written result_ = Written::stored();
  int64_t changes_ = 0;
  bool open_ = false;
  bool wrote_ = false;
};

}  // namespace orvanta
