// Recorded spans on their way into the store.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "capture/last_input.h"
#include "storage/transaction.h"

namespace orvanta {

/// What a row of `events` is made of. Times are Unix seconds.
struct SpanRecord {
  double start = 0;
  double end = 0;
  std::string app;
  std::optional<std::string> bundle;
  std::optional<std::string> title;
  std::optional<std::string> url;
  std::optional<std::string> domain;
  bool idle = false;
  std::optional<int64_t> project;
};

/// Keeps what the store could not take, in order, and brings it there later: a span that was closed
/// while the disk was full is not lost. Never waits: a store that is busy is tried again. Holds a
/// day's worth; what comes after that is not kept. The last closed spans can still be shortened,
/// until they are settled. Not thread-safe.
class SpanLog {
 public:
  /// `db` outlives the log.
  explicit SpanLog(Database& db) : db_(db) {}

  /// Begins a span. At most one is open.
  void open(SpanRecord span);
  /// The open span, if any, lasts until then.
  void extend(double end);
  void describe(const std::optional<std::string>& title, const std::optional<std::string>& url);
  void close(double end);

  /// Nothing was going on from `end` to the next span: the closed ones last until then, and those
  /// that did not begin before are none. `end` is not before settled(). To be called while no span
  /// is open, and written together with what is opened next.
  void endBy(double end);
  /// What has been closed stays as it is, and so does whatever was before `until`.
  void settle(double until);
  double settled() const { return settled_; }

  /// Nobody has been there since then, for whatever reason the open span goes on; absent while
  /// somebody is. Stored with what is written next, see last_input.
  void setLastInput(std::optional<double> at) { lastInput_ = at; }

  /// Stores what waits, the oldest first, in one transaction: as much as a tick has time for, or
  /// all of it with the usual patience. Fails when something still waits.
  Written write(Patience patience = Patience::None);

  /// Stores nothing until release(), so that somebody may change the rows. To be called when
  /// nothing waits. What was before `now` is settled.
  void hold(double now);
  /// Where the span that was open then was cut at `cut`, what comes after is one of its own.
  void release(std::optional<double> cut);

  /// Row id of the open span, -1 without one and while it could not be stored.
  int64_t openId() const;
  /// Spans of which something is not stored, and about how much memory they take.
  std::size_t waiting() const;
  std::size_t bytes() const { return bytes_; }

  /// A project that is gone names no span that comes later.
  void forgetProject(int64_t project);

 private:
  struct Entry {
    SpanRecord span;
    int64_t id = -1;       // -1 until it is stored
    double storedEnd = 0;  // what the row holds
    bool titleStored = true;
    bool kept = true;    // false where there was no room for it
    bool final = false;  // settled
    bool gone = false;   // it was none; its row is to go
    bool bare = false;   // only its times are known any more
  };

  bool stored(const Entry& entry) const;
  Written writeSome(Patience patience);
  last_input::Kept inputToKeep(int64_t open) const;
  // Above all ids, and above 0: those of moments that were added by hand are below.
  int64_t insert(Transaction& change, const Entry& entry) const;
  int64_t put(Transaction& change, const Entry& entry) const;
  std::optional<int64_t> known(Transaction& change, const SpanRecord& span) const;
  void dropFirst();
  void retire();
  void dropGone();
  void forgetTexts(Entry& entry);
  static std::size_t weight(const Entry& entry);
  std::size_t closed() const { return entries_.size() - (open_ ? 1 : 0); }

  Database& db_;
  std::deque<Entry> entries_;  // by start; all but the open one wait or may be shortened
  bool open_ = false;          // the last of them is
  bool held_ = false;
  std::size_t bytes_ = 0;
  double settled_ = 0;
  int64_t generation_ = 0;  // of the file that the ids belong to
  std::optional<double> lastInput_;
  last_input::Kept keptInput_;  // in the store
};

}  // namespace orvanta
