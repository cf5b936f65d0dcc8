// Looks after the store's file: backups, checks, repair, restoring, erasing for good; and the index
// of activities beside it.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/serial_queue.h"
#include "storage/activity_index.h"
#include "storage/backups.h"
#include "storage/database.h"
#include "storage/past.h"
#include "storage/restore.h"
#include "storage/store_check.h"
#include "storage/transaction.h"

namespace orvanta {

/// Works beside the program, on a queue of its own, as long as the store is open; one task at a
/// time. Its operations may be called from any thread; those that yield something block until it is
/// done, which takes seconds for years of spans. One process keeps a store: the holder of the
/// DataLock.
class StoreKeeper {
 public:
  struct Listener {
    /// The file has become another: what must be in every store may be missing.
    std::function<void()> renewed = [] {};
    /// A French sentence for the user.
    std::function<void(const std::string& sentence)> tell = [](const std::string&) {};
  };

  /// `db` and `backups` outlive the keeper.
  StoreKeeper(Database& db, Backups& backups, Clock clock = wallClock, Calendar calendar = {});
  /// Ends what is under way.
  ~StoreKeeper();
  StoreKeeper(const StoreKeeper&) = delete;
  StoreKeeper& operator=(const StoreKeeper&) = delete;

  /// Before anything else; called on the keeper's queue from then on.
  void listen(Listener listener);

  /// Looks the file over, some time after the start, makes a backup that is due, and brings the
  /// index up to date. Returns at once, as do the next two.
  void start();
  /// Once an hour.
  void hourly();
  /// Once in some seconds: repairs a store that was found to be damaged.
  void look();

  /// The store's file has become another by no work of the keeper's: what is left of the old one
  /// beside it is removed. Returns at once.
  void replaced();

  struct Made {
    std::optional<Backup> backup;
    std::string error;  ///< French, without full stop
  };
  Made backUp();
  std::vector<Backup> backups() const { return backups_.list(); }

  StoreCheck check();

  /// All that goes to another machine, see moving.h.
  CopyResult takeAll(const std::filesystem::path& target);

  /// A file of the user's choice that may be restored like one of the backups, instead of the one
  /// picked before.
  void pick(const std::filesystem::path& file);
  std::optional<Backup> picked();

  RestorePreview preview(const std::filesystem::path& file);
  RestoreResult restore(const std::filesystem::path& file);

  /// Notes in the store, in the transaction that erases these times from it, that erase() is to
  /// follow: a later start makes up for one that was cut short.
  void remember(Transaction& change, const std::vector<TimeRange>& times);
  /// Erases what the store no longer holds from everything else: the log, unused bytes, the index,
  /// backups and stores that were put aside; damaged ones, from which nothing can be erased, are
  /// removed. False when something of it is left.
  bool erase(const std::vector<TimeRange>& times);
  /// The same of the past of a site or an application.
  void remember(Transaction& change, const Past& past);
  bool erase(const Past& past);
  /// Another erasure, without waiting; damaged stores are left.
  void eraseLater(const Erasure& erasure);

  /// What the last repair or restoring saved and what it did not; "" when there was none.
  std::string notice();

 private:
  void repair();
  void checkQuietly();
  void backUpIfDue();
  void index();
  void indexStep();
  void renewed(const std::string& sentence);
  void noted(const std::string& sentence);
  bool eraseEverywhere(const Erasure& erasure);
  bool eraseFromCopies(const Erasure& erasure);
  template <class Result, class Work>
  Result wait(Work work);

  Database& db_;
  Backups& backups_;
  const Clock clock_;
  const Calendar calendar_;
  Listener listener_;
  std::stop_source stop_;
  ActivityIndex index_;
  bool resident_ = false;  // this and the next only touched on the queue
  bool indexing_ = false;
  std::atomic<bool> repairing_ = false;
  std::mutex pickedMutex_;  // guards the next
  std::optional<Backup> picked_;
  SerialQueue queue_{"orvanta.keeper"};  // last: it ends before what its tasks use
};

}  // namespace orvanta
