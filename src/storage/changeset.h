// The difference that writes make to rows, as SQLite's session extension records it.
#pragma once

#include <memory>
#include <string>

#include "storage/transaction.h"

namespace orvanta {

/// Records what a transaction does to the tables `events`, `projects`, `rules` and `rule_origins`,
/// from its making until it ends.
class ChangeRecorder {
 public:
  explicit ChangeRecorder(Transaction& change);

  /// The difference so far; empty when there is none. Fails the transaction when it cannot be told.
  std::string changeset();

 private:
  struct Delete {
    void operator()(sqlite3_session* session) const { sqlite3session_delete(session); }
  };
  Transaction& change_;
  std::unique_ptr<sqlite3_session, Delete> session_;
};

enum class Applied { All, Conflict, Failed };

/// Makes the difference again, or its opposite. Where a row is not as the difference found it, but
/// for a title or an address that was erased since, it is a conflict and nothing is done.
Applied apply(Transaction& change, const std::string& changeset, bool opposite);

}  // namespace orvanta
