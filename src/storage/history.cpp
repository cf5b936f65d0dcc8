#include "storage/history.h"

#include <algorithm>
#include <exception>
#include <set>
#include <string_view>

#include "storage/erased_words.h"
#include "storage/erasure.h"
#include "storage/ev.h"
#include "storage/overlap.h"
#include "storage/snapshot.h"
#include "storage/touched_spans.h"

namespace orvanta {
namespace {

// Ends an act that is only rehearsed. No failure: whoever handles those lets it pass.
struct Rehearsed {};

// What is stored is stored, whether or not it can be told in figures.
template <class Get>
auto figures(const Get& get) -> decltype(get()) {
  try {
    return get();
  } catch (const std::exception&) {
    return {};
  }
}

// From here on the thread's Snapshot sees what was before. Without a write-ahead log it would keep
// the transaction from being stored.
bool pinned(Transaction& change) {
  bool log = false;
  change.each("PRAGMA journal_mode", {}, [&](const Cursor& row) { log = row.str(0) == "wal"; });
  return log && change &&
         change.database().scan("SELECT 1 FROM sqlite_master LIMIT 1", {}, [](const Cursor&) {});
}

// The label of the erasure that a touched span was recorded after: it has the number of one that is
// gone.
std::optional<std::string> erasedSince(Transaction& change, int64_t id, const Touched& touched) {
  constexpr double kAtOnce = 5;  // seconds: recording goes on while something is erased
  constexpr std::string_view kTable = "events|";
  std::optional<std::pair<double, std::string>> erasure;
  change.each("SELECT min(at), label FROM changes WHERE id > ? AND kind=? HAVING count(*) > 0",
              {id, change_log::kErase},
              [&](const Cursor& row) { erasure.emplace(row.dbl(0), row.str(1).value_or("")); });
  if (!erasure) return {};
  bool found = false;
  for (auto row = touched.lower_bound(kTable);
       !found && row != touched.end() && row->first.starts_with(kTable); ++row) {
    change.each("SELECT 1 FROM events WHERE id=CAST(? AS INTEGER) AND start > ?",
                {row->first.substr(kTable.size()), erasure->first - kAtOnce},
                [&](const Cursor&) { found = true; });
  }
  return found ? std::optional(erasure->second) : std::nullopt;
}

// Whether moments and imports that come back lie over what has been added there since. A moment may
// lie in an absence.
bool coverOthers(Transaction& change, const std::string& changeset) {
  static const OverlapQuery kQuery("id, idle", "AND end > start");
  const auto touched = touchedSpans(changeset);
  const std::set<int64_t> own(touched.added.begin(), touched.added.end());
  bool covered = false;
  bool imported = false;
  const auto look = [&](const Cursor& row) {
    const bool counts = imported || row.int_(1) != 1;
    covered = covered || (counts && !own.contains(row.int_(0).value_or(0)));
  };
  for (const auto id : touched.added) {
    std::optional<TimeRange> moment;
    change.each(
        "SELECT start, end, bundle=?3 FROM events WHERE id=?1 AND (bundle=?2 AND idle=0 OR "
        "bundle=?3)",
        {id, kManualBundle, kImportBundle}, [&](const Cursor& row) {
          moment = {row.dbl(0), row.dbl(1)};
          imported = row.int_(2) == 1;
        });
    if (!moment) continue;
    change.each(kQuery.longBefore, OverlapQuery::args(*moment), look);
    change.each(kQuery.fromShortlyBefore, OverlapQuery::args(*moment), look);
  }
  return covered;
}

// The label of a change after which this one's rows are others: an erasure, or an earlier change
// that brought them and is undone. Their numbers are given again. Absent where there is none.
std::optional<std::string> othersSince(Transaction& change, int64_t id,
                                       const std::string& changeset, bool back) {
  const auto touched = touchedBy(changeset);
  if (auto label = erasedSince(change, id, touched)) return label;
  if (back) return {};
  std::vector<std::pair<int64_t, std::string>> earlier;
  change.each(
      "SELECT id, label FROM changes WHERE id < ? AND undone <> 0 AND changeset IS NOT NULL", {id},
      [&](const Cursor& row) {
        earlier.emplace_back(row.int_(0).value_or(0), row.str(1).value_or(""));
      });
  for (const auto& [other, label] : earlier) {
    const auto kept = change_log::find(change, other);
    const auto rows = kept ? touchedBy(kept->changeset) : Touched();
    const bool brings = std::any_of(rows.begin(), rows.end(), [&](const auto& row) {
      return row.second == ~uint64_t{0} && touched.contains(row.first);
    });
    if (brings) return label;
  }
  return {};
}

}  // namespace

class History::Rehearsing {
 public:
  // What is changed stays in memory, up to 64 MiB of it: it is not wanted on the disk.
  Rehearsing(History& history, Transaction& change, const Made& made)
      : history_(history), change_(change) {
    spill("PRAGMA cache_spill=-65536");
    history_.made_ = &made;
    history_.rehearsing_ = true;
  }
  ~Rehearsing() {
    history_.rehearsing_ = false;
    spill("PRAGMA cache_spill=1");
  }
  Rehearsing(const Rehearsing&) = delete;
  Rehearsing& operator=(const Rehearsing&) = delete;

 private:
  void spill(const char* pragma) {
    sqlite3_exec(change_.connection(), pragma, nullptr, nullptr, nullptr);
  }

  History& history_;
  Transaction& change_;
};

Written History::record(const Work& work, Recorded what) {
  const auto make = [&](bool listed) {
    // Before the transaction: who waits for reports holds up nobody who writes.
    std::optional<Snapshot> before;
    if (measure_) before.emplace(db_);
    Transaction change(db_);
    if (change && rehearsing_) return rehearsed(change, work);
    int64_t id = -1;
    std::function<std::string()> effect;
    {
      ChangeRecorder recorder(change, what);
      ChangeNote note;
      if (change) note = work(change);
      const auto changeset = recorder.changeset();
      if (listed && !changeset.empty()) id = change_log::add(change, clock_(), note, changeset);
      if (before && id > 0 && pinned(change)) {
        effect = figures([&] { return measure_(change, changeset); });
      }
    }
    auto written = change.commit();
    if (!written || !effect) return written;
    const auto text = figures(effect);
    before.reset();
    Transaction measured(db_);
    change_log::setEffect(measured, clock_(), id, text);
    measured.commit().forget();
    return written;
  };
  auto written = make(true);
  // Damage that is met ends the transaction; it may be the list's alone.
  return (written.code() & 0xff) == SQLITE_CORRUPT ? make(false) : written;
}

Written History::rehearsed(Transaction& change, const Work& work) {
  const auto note = work(change);
  auto written = change.commit();
  if (!written) return written;
  (*made_)(note);
  throw Rehearsed();
}

History::Rehearsal History::rehearse(const std::vector<std::function<void()>>& acts,
                                     const Made& made) {
  std::optional<Snapshot> before;
  if (measure_) before.emplace(db_);
  std::function<std::string()> effect;
  {
    Transaction change(db_);
    if (!change) return {change.commit(), {}};
    const Rehearsing rehearsing(*this, change, made);
    ChangeRecorder recorder(change);
    for (const auto& act : acts) {
      try {
        act();
      } catch (const Rehearsed&) {
        continue;
      }
    }
    const auto changeset = recorder.changeset();
    if (measure_ && change) effect = measure_(change, changeset);
    if (!change) return {change.commit(), {}};
  }
  return {Written::stored(), effect ? effect() : std::string()};
}

void History::erase(Transaction& change, const std::vector<TimeRange>& times,
                    const ChangeNote& note, const Erasure& erasure) {
  // First, so that no entry takes the number of one that goes.
  const bool kept = change_log::add(change, clock_(), note, {}) > 0;
  std::optional<ErasedWords> words;
  if (kept) words.emplace(change, times);
  if (change) addErasing(change.connection());
  for (const auto& step : erasure.steps) {
    if (kept || !step.ofChanges) change.run(step.sql, step.args);
  }
  if (kept) words->drop();
}

History::Outcome History::turn(int64_t id, bool back) {
  Transaction change(db_);
  const auto kept = change_log::find(change, id);
  if (change && (!kept || kept->undone == back)) return {Outcome::Kind::Unknown, {}};
  if (kept) {
    if (const auto label = othersSince(change, id, kept->changeset, back)) {
      return {Outcome::Kind::Depends, *label};
    }
  }
  auto applied = Applied::Failed;
  {
    Transaction within(db_);
    if (kept && change) applied = apply(within, kept->changeset, back);
    if (applied == Applied::All && !within.commit()) applied = Applied::Failed;
  }
  if (applied == Applied::All && !back && coverOthers(change, kept->changeset)) {
    applied = Applied::Conflict;
  }
  if (applied == Applied::Conflict) {
    return {Outcome::Kind::Depends, change_log::inTheWay(change, id, kept->changeset)};
  }
  if (applied == Applied::Failed) return {Outcome::Kind::NotStored, {}};
  change_log::setUndone(change, id, back);
  if (!change.commit()) return {Outcome::Kind::NotStored, {}};
  return {Outcome::Kind::Done, kept->kind};
}

}  // namespace orvanta
