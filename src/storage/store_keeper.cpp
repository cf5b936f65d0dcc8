#include "storage/store_keeper.h"

#include <chrono>
#include <thread>
#include <utility>

#include "base/memory.h"
#include "storage/backup_names.h"
#include "storage/file_connection.h"
#include "storage/kept_stores.h"
#include "storage/moving.h"
#include "storage/repair.h"
#include "storage/schema.h"
#include "storage/scrub.h"
#include "storage/unfinished_erasure.h"

namespace orvanta {
namespace {

using namespace std::chrono_literals;

constexpr auto kAfterStart = 60s;  // a login has other things to do
constexpr auto kCheckBudget = 10s;
// Holds the last notice, which is of interest also after a restart.
constexpr auto kNotice = "store_notice";

}  // namespace

StoreKeeper::StoreKeeper(Database& db, Backups& backups, Clock clock, Calendar calendar)
    : db_(db),
      backups_(backups),
      clock_(std::move(clock)),
      calendar_(std::move(calendar)),
      index_(db, clock_) {}

StoreKeeper::~StoreKeeper() {
  stop_.request_stop();
  queue_.discard();
}

void StoreKeeper::listen(Listener listener) {
  listener_ = std::move(listener);
}

void StoreKeeper::start() {
  queue_.post([this] {
    resident_ = true;
    const auto erasure = unfinished::erasure(db_);
    if (!erasure.steps.empty()) eraseEverywhere(erasure);
    index_.removeIfStale();
  });
  queue_.repeat(kAfterStart, 24h, [this] {
    queue_.stopRepeating();
    checkQuietly();
    backUpIfDue();
    index();
  });
}

void StoreKeeper::hourly() {
  queue_.post([this] {
    backUpIfDue();
    index();
  });
}

void StoreKeeper::look() {
  const auto condition = db_.condition();
  if (!condition || condition->trouble != StoreTrouble::Damaged) return;
  if (!repairing_.exchange(true)) queue_.post([this] { repair(); });
}

// A damage that no request has met yet is found here.
void StoreKeeper::checkQuietly() {
  const auto check =
      checkStore(db_.location().file(),
                 {.stop = stop_.get_token(),
                  .budget = std::chrono::duration_cast<std::chrono::milliseconds>(kCheckBudget)});
  if (!check.finished || check.whole) return;
  for (const auto& problem : check.problems) db_.log()("Orvanta: " + problem);
  if (!repairing_.exchange(true)) repair();
}

// Where it fails it is not tried again in this run: the file stays as it is, and so does the
// trouble that is told.
void StoreKeeper::repair() {
  RepairResult repair;
  db_.exchange(Database::Meanwhile::Fail, [&] {
    SalvageOptions options{.prepareSchema = createSchema, .calendar = calendar_};
    options.stop = stop_.get_token();
    const auto backups = backups_.list();
    if (!backups.empty()) options.newestBackup = backups.front().file;
    repair = repairStore(db_.location().file(), options, clock_());
    return repair.done;
  });
  const auto& sentence = repair.report.sentence;
  if (sentence.empty()) {  // the file is being exchanged already
    repairing_ = false;
    return;
  }
  db_.log()("Orvanta: " + sentence);
  if (!repair.done) {
    listener_.tell(sentence);
    return;
  }
  repairing_ = false;
  renewed(sentence);
}

void StoreKeeper::replaced() {
  queue_.post([this] { index_.removeStale(); });
}

void StoreKeeper::renewed(const std::string& sentence) {
  index_.removeStale();
  listener_.renewed();
  noted(sentence);
  listener_.tell(sentence);
}

void StoreKeeper::noted(const std::string& sentence) {
  db_.setSetting(kNotice, sentence).forget();
}

std::string StoreKeeper::notice() {
  return db_.setting(kNotice);
}

void StoreKeeper::backUpIfDue() {
  const auto store = db_.location().file();
  if (stop_.stop_requested() || db_.condition() ||
      !backups_.due(clock_(), readStoreFacts(store).bytes)) {
    return;
  }
  const auto copy = backups_.make(store, clock_(), stop_.get_token());
  if (copy.made) {
    backups_.prune(clock_());
  } else if (!copy.stopped) {
    db_.log()("Orvanta: sauvegarde impossible : " + copy.error);
  }
}

void StoreKeeper::index() {
  if (!indexing_) indexStep();
}

// Half of the time, and whoever waits for the queue comes between.
void StoreKeeper::indexStep() {
  const auto begin = std::chrono::steady_clock::now();
  if (!stop_.stop_requested() && !db_.condition() && index_.step()) {
    indexing_ = true;
    std::this_thread::sleep_for(std::chrono::steady_clock::now() - begin);
    queue_.post([this] { indexStep(); });
  } else if (std::exchange(indexing_, false)) {
    giveBackMemory();
  }
}

// On the queue, so that nothing else is done to the file meanwhile.
template <class Result, class Work>
Result StoreKeeper::wait(Work work) {
  Result result;
  queue_.sync([&] { result = work(); });
  return result;
}

StoreKeeper::Made StoreKeeper::backUp() {
  return wait<Made>([&]() -> Made {
    const double now = clock_();
    const auto copy = backups_.make(db_.location().file(), now, stop_.get_token());
    if (!copy.made) return {{}, copy.stopped ? "la sauvegarde a été interrompue" : copy.error};
    backups_.prune(now);
    return {Backup{copy.file, now, copy.bytes}, ""};
  });
}

StoreCheck StoreKeeper::check() {
  return wait<StoreCheck>(
      [&] { return checkStore(db_.location().file(), {.full = true, .stop = stop_.get_token()}); });
}

CopyResult StoreKeeper::takeAll(const std::filesystem::path& target) {
  return wait<CopyResult>(
      [&] { return orvanta::takeAll(db_.location().file(), target, {.stop = stop_.get_token()}); });
}

void StoreKeeper::pick(const std::filesystem::path& file) {
  const std::lock_guard lock(pickedMutex_);
  picked_ = Backup{file, modifiedAt(file), bytesOf(file)};
}

std::optional<Backup> StoreKeeper::picked() {
  const std::lock_guard lock(pickedMutex_);
  return picked_;
}

RestorePreview StoreKeeper::preview(const std::filesystem::path& file) {
  return restorePreview(db_.location(), file);
}

RestoreResult StoreKeeper::restore(const std::filesystem::path& file) {
  return wait<RestoreResult>([&] {
    RestoreResult result;
    db_.exchange(Database::Meanwhile::Wait, [&] {
      result = restoreStore(db_.location(), file,
                            {.now = clock_(), .calendar = calendar_, .stop = stop_.get_token()});
      return result.done;
    });
    if (result.done) {
      repairing_ = false;
      index_.removeStale();
      listener_.renewed();
      noted(result.kept ? "Une sauvegarde a été restaurée. L’ancien fichier est gardé : " +
                              result.kept->filename().string() + "."
                        : "Une sauvegarde a été restaurée.");
    } else if (result.error.empty()) {
      result.error = "le fichier des données est occupé";
    }
    return result;
  });
}

void StoreKeeper::remember(Transaction& change, const std::vector<TimeRange>& times) {
  unfinished::add(change, times);
}

void StoreKeeper::remember(Transaction& change, const Past& past) {
  unfinished::add(change, past);
}

bool StoreKeeper::erase(const std::vector<TimeRange>& times) {
  return wait<bool>([&] { return eraseEverywhere(eraseTimesInCopy(times)); });
}

bool StoreKeeper::erase(const Past& past) {
  return wait<bool>([&] { return eraseEverywhere(erasePastInCopy(past)); });
}

bool StoreKeeper::eraseEverywhere(const Erasure& erasure) {
  const bool clean =
      eraseFromCopies(erasure) && removeDamagedStores(db_.location(), db_.log()).empty();
  if (clean) unfinished::clear(db_);
  return clean;
}

void StoreKeeper::eraseLater(const Erasure& erasure) {
  queue_.post([this, erasure] { eraseFromCopies(erasure); });
}

bool StoreKeeper::eraseFromCopies(const Erasure& erasure) {
  const auto& where = db_.location();
  db_.truncateLog();
  // What rows leave behind where they move from page to page is out of SQLite's reach.
  bool clean = false;
  db_.exchange(Database::Meanwhile::Wait, [&] {
    clean = scrubUnusedBytes(where.file());
    return false;
  });
  clean = index_.removeStale() && clean;
  if (resident_) queue_.post([this] { index(); });
  clean = backups_.apply(erasure).left.empty() && clean;
  return eraseFromKeptStores(where, erasure, db_.log()).empty() && clean;
}

}  // namespace orvanta
