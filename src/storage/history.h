// What was changed by hand, the way back, and what a change would do.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/calendar.h"
#include "base/clock.h"
#include "storage/change_log.h"
#include "storage/changeset.h"
#include "storage/erasure.h"
#include "storage/transaction.h"

namespace orvanta {

/// Measures what a change does. Is called in the open transaction, with its changeset, when the
/// work is done; a Snapshot of what was before is held since the transaction began. What it yields
/// is called when the transaction is over, stored or rolled back, and yields the effect as JSON.
using Measure =
    std::function<std::function<std::string()>(Transaction& change, const std::string& changeset)>;

/// Keeps, in the store itself, the rows of spans, rules, projects, goals and settings as they were
/// before and after each change, and puts them back: exactly, row by row, ids included. By the
/// changesets of SQLite's session extension (sqlite.org/sessionintro.html). From any thread.
class History {
 public:
  using Work = std::function<ChangeNote(Transaction&)>;
  using Made = std::function<void(const ChangeNote&)>;

  /// Without `measure` no effect is told.
  explicit History(Database& db, Clock clock = wallClock, Measure measure = {})
      : db_(db), clock_(std::move(clock)), measure_(std::move(measure)) {}

  /// Makes a change and its entry in one transaction; `work` fills in the note. There is no entry
  /// when nothing was stored, or nothing has changed.
  Written record(const Work& work, Recorded what = Recorded::Activity);

  /// Erases, in the caller's transaction, all that was recorded in these times and what the entries
  /// hold of it. Its own entry cannot be taken back.
  void erase(Transaction& change, const std::vector<TimeRange>& times, const ChangeNote& note) {
    erase(change, times, note, eraseTimes(times));
  }
  /// The same of only some of what was recorded in these times.
  void erase(Transaction& change, const std::vector<TimeRange>& times, const ChangeNote& note,
             const Erasure& erasure);

  struct Rehearsal {
    Written possible;    ///< whether a change could be tried; else the store tells why
    std::string effect;  ///< as Measure yields it
  };
  /// Runs acts that call record() each, one after the other, and takes all of it back. An act ends
  /// where the change is made: nothing that would follow it happens. `made` is called then, while
  /// the change can still be read. What an act throws goes on to the caller; one that returns has
  /// changed nothing. Routes that are answered on the same thread see rehearsing().
  Rehearsal rehearse(const std::vector<std::function<void()>>& acts, const Made& made);
  bool rehearsing() const { return rehearsing_; }

  /// Of 90 days, the newest first. Absent when not all can be read.
  std::optional<std::vector<Change>> list(std::size_t most) const {
    return change_log::list(db_, clock_(), most);
  }

  struct Outcome {
    enum class Kind {
      Done,
      Unknown,   ///< no such change, or it is undone already (not undone, for redo)
      Depends,   ///< what it changed has been changed again since; nothing was done
      NotStored  ///< the store tells why
    };
    Kind kind = Kind::Done;
    std::string text;  ///< when done, the change's kind; when it depends, the label of what is in
                       ///< the way, "" for none that is known
  };
  Outcome undo(int64_t id) { return turn(id, true); }
  /// Makes an undone change once more.
  Outcome redo(int64_t id) { return turn(id, false); }

 private:
  class Rehearsing;

  Outcome turn(int64_t id, bool back);
  Written rehearsed(Transaction& change, const Work& work);

  Database& db_;
  const Clock clock_;
  const Measure measure_;
  std::atomic<bool> rehearsing_ = false;  // changed in a transaction only
  const Made* made_ = nullptr;            // of the rehearsal
};

}  // namespace orvanta
