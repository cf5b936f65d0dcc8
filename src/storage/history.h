// What was changed by hand, and the way back.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/clock.h"
#include "storage/transaction.h"

namespace orvanta {

/// What the user is told of a change.
struct ChangeNote {
  std::string kind;    ///< "assign", "rule.save", …
  std::string label;   ///< French
  int64_t spans = 0;   ///< that it touched
  double seconds = 0;  ///< that they last
  std::vector<int64_t> learnedRules;
};

struct Change {
  int64_t id = 0;
  double at = 0;  ///< Unix seconds
  ChangeNote note;
  bool undone = false;
};

/// Remembers, while the program runs, the rows of spans, rules and projects as they were before and
/// after each change, and puts them back: exactly, row by row, ids included. By the changesets of
/// SQLite's session extension (sqlite.org/sessionintro.html). From any thread.
class History {
 public:
  explicit History(Database& db, Clock clock = wallClock) : db_(db), clock_(std::move(clock)) {}

  /// Makes a change in one transaction and remembers it; `work` fills in the note. Nothing is
  /// remembered when nothing was stored, or nothing has changed.
  Written record(const std::function<ChangeNote(Transaction&)>& work);

  /// The newest first.
  std::vector<Change> list(std::size_t most) const;

  enum class Outcome {
    Done,
    Unknown,   ///< no such change, or it is undone already (not undone, for redo)
    Depends,   ///< what it changed has been changed again since; nothing was done
    NotStored  ///< the store tells why
  };
  Outcome undo(int64_t id) { return turn(id, true); }
  /// Makes an undone change once more.
  Outcome redo(int64_t id) { return turn(id, false); }

  /// Forgets the changes that were undone: what they would bring back may have been erased.
  void forgetUndone();
  void forgetAll();

 private:
  struct Entry {
    Change change;
    std::string changeset;
  };

  Outcome turn(int64_t id, bool back);
  void keep(ChangeNote note, std::string changeset);

  Database& db_;
  const Clock clock_;
  mutable std::mutex mutex_;   // guards the next; taken before the store's
  std::deque<Entry> entries_;  // the oldest first
  std::size_t bytes_ = 0;
  int64_t lastId_ = 0;
};

}  // namespace orvanta
