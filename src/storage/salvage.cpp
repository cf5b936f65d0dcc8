#include "storage/salvage.h"

#include <algorithm>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "base/files.h"
#include "storage/backup_names.h"
#include "storage/damaged_store.h"
#include "storage/page_file.h"
#include "storage/salvage_sentence.h"
#include "storage/salvage_target.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

// A span as the indexes know it.
struct Trace {
  std::optional<double> start;
  std::optional<double> end;
};

class Salvage {
 public:
  Salvage(const fs::path& copy, SalvageTarget& target, const SalvageOptions& options)
      : options_(options),
        target_(target),
        pages_(PageFile::open(copy)),
        damaged_(copy, options.stop) {
    report_.logCut = pages_ && pages_->logCut();
  }

  SalvageReport run();

 private:
  using Table = SalvageReport::Table;

  void take(Table& table, const TableShape& shape, int64_t rowid, const Args& values);
  bool stopped() const { return options_.stop.stop_requested() || !target_; }
  bool mayBeWhole(const TableShape& shape) const;
  void walkTables();
  void readPages();
  const TableShape* tableOf(const std::vector<PageFile::Row>& rows) const;
  void lookBetween();
  void traceSpans();
  void fillFromBackup();
  void fill(const FileConnection& backup, Table& table, const TableShape& shape);
  std::optional<double> backupTime() const;
  void countLost();

  const SalvageOptions& options_;
  SalvageTarget& target_;
  std::optional<PageFile> pages_;  // opened first: SQLite may drop a log that it cannot use
  DamagedStore damaged_;
  std::map<std::string, std::set<int64_t>> unsound_;  // row ids by table
  std::map<int64_t, Trace> traces_;                   // of spans that were not found
  SalvageReport report_;
};

void Salvage::take(Table& table, const TableShape& shape, int64_t rowid, const Args& values) {
  switch (target_.add(shape, rowid, values)) {
    case SalvageTarget::Added::kYes:
      ++table.read;
      break;
    case SalvageTarget::Added::kUnsound:
      unsound_[shape.name].insert(rowid);
      break;
    default:
      break;
  }
}

// A table of a later version need not be in an older file; those that every version has must be.
bool Salvage::mayBeWhole(const TableShape& shape) const {
  return damaged_.whole() && !damaged_.has(shape) && shape.name != "events" &&
         shape.name != "projects" && shape.name != "rules" && shape.name != "settings";
}

void Salvage::walkTables() {
  for (const auto& shape : target_.tables()) {
    if (stopped()) return;
    auto& table = report_.tables.emplace_back(Table{.name = shape.name});
    const bool all = damaged_.walk(
        shape, [&](int64_t rowid, const Args& values) { take(table, shape, rowid, values); });
    table.whole = (all && damaged_.whole() && !report_.logCut && unsound_[shape.name].empty()) ||
                  mayBeWhole(shape);
  }
}

// To which table a page's rows belong: to the one whose columns most of them fit.
const TableShape* Salvage::tableOf(const std::vector<PageFile::Row>& rows) const {
  const TableShape* best = nullptr;
  std::size_t most = 0;
  bool bestIsExact = false;
  for (const auto& shape : target_.tables()) {
    const auto fitting = static_cast<std::size_t>(
        std::count_if(rows.begin(), rows.end(),
                      [&](const PageFile::Row& row) { return shape.fits(row.values); }));
    const bool exact = std::any_of(rows.begin(), rows.end(), [&](const PageFile::Row& row) {
      return row.values.size() == shape.columns.size() && shape.fits(row.values);
    });
    if (fitting > most || (fitting == most && fitting > 0 && exact && !bestIsExact)) {
      best = &shape;
      most = fitting;
      bestIsExact = exact;
    }
  }
  return best;
}

void Salvage::readPages() {
  const bool allWhole = std::all_of(report_.tables.begin(), report_.tables.end(),
                                    [](const Table& table) { return table.whole; });
  if (!pages_ || allWhole) return;
  const auto free = pages_->freePages();
  for (uint32_t page = 2; page <= pages_->pages() && !stopped(); ++page) {
    if (page < free.size() && free[page]) continue;
    const auto rows = pages_->rows(page);
    const auto* shape = tableOf(rows);
    if (!shape) continue;
    auto& table = report_.tables[static_cast<std::size_t>(shape - target_.tables().data())];
    if (table.whole) continue;
    for (const auto& row : rows) {
      if (shape->fits(row.values)) take(table, *shape, row.rowid, row.values);
    }
  }
}

// Rows that no walk reached although a way leads to them.
void Salvage::lookBetween() {
  int64_t patience = 200'000;  // a second or two
  for (std::size_t i = 0; i < report_.tables.size(); ++i) {
    auto& table = report_.tables[i];
    const auto& shape = target_.tables()[i];
    if (table.whole) continue;
    int64_t next = 1;
    for (const auto known : target_.rowids(shape)) {
      for (; next < known && patience > 0 && !stopped(); ++next, --patience) {
        damaged_.lookUp(shape, next, [&](int64_t rowid, const Args& values) {
          take(table, shape, rowid, values);
        });
      }
      if (patience == 0) break;
      next = std::max(next, known + 1);
    }
  }
}

// The indexes on times name spans whose rows are gone.
void Salvage::traceSpans() {
  for (std::size_t i = 0; i < report_.tables.size(); ++i) {
    auto& table = report_.tables[i];
    const auto& shape = target_.tables()[i];
    if (table.name != "events" || table.whole || !damaged_.has(shape)) continue;
    const auto missing = [&](int64_t rowid) {
      constexpr std::size_t kMostTraces = 1'000'000;
      if (target_.has(shape, rowid) || traces_.size() == kMostTraces) return false;
      damaged_.lookUp(shape, rowid,
                      [&](int64_t id, const Args& values) { take(table, shape, id, values); });
      return !target_.has(shape, rowid);
    };
    damaged_.walkIndex("events", "start", "idx_events_start", [&](int64_t rowid, double start) {
      if (traces_.contains(rowid) || missing(rowid)) traces_[rowid].start = start;
    });
    damaged_.walkIndex("events", "end", "idx_events_end", [&](int64_t rowid, double end) {
      if (traces_.contains(rowid) || missing(rowid)) traces_[rowid].end = end;
    });
  }
}

void Salvage::fill(const FileConnection& backup, Table& table, const TableShape& shape) {
  const bool spans = table.name == "events";
  const auto coverage = spans ? target_.coverage() : Coverage();
  const auto known = tablesOf(backup);
  const auto found = std::find_if(known.begin(), known.end(),
                                  [&](const TableShape& one) { return one.name == shape.name; });
  if (found == known.end()) return;
  std::string sql = "SELECT rowid";
  for (const auto& column : shape.columns) {
    sql += found->column(column.name) < 0 ? ", NULL" : ", " + quotedName(column.name);
  }
  backup.each(sql + " FROM " + quotedName(shape.name), {}, [&](const Cursor& row) {
    Args values;
    for (int i = 1; i < row.columns(); ++i) values.push_back(row.value(i));
    const auto rowid = row.int_(0).value_or(0);
    const auto add = [&](std::optional<int64_t> id) {
      const auto added = target_.add(shape, id, values);
      if (added == SalvageTarget::Added::kYes) ++table.fromBackup;
      return added;
    };
    if (!spans) {
      add(rowid);
      return;
    }
    constexpr double kTouch = 0.001;  // seconds
    const double start = row.dbl(1 + shape.column("start"));
    const double end = row.dbl(1 + shape.column("end"));
    if (coverage.covered(start, end) > kTouch) return;
    // Another span has got its id since.
    if (add(rowid) == SalvageTarget::Added::kKnown && end - start > kTouch) add({});
  });
}

std::optional<double> Salvage::backupTime() const {
  if (!options_.newestBackup) return {};
  const auto name = readBackupName(*options_.newestBackup, options_.calendar);
  return name ? std::optional(name->time) : std::nullopt;
}

void Salvage::fillFromBackup() {
  if (!options_.newestBackup) return;
  const auto backup = FileConnection::reading(*options_.newestBackup);
  if (!backup) return;
  for (std::size_t i = 0; i < report_.tables.size() && !stopped(); ++i) {
    if (!report_.tables[i].whole) fill(backup, report_.tables[i], target_.tables()[i]);
  }
}

// Of the spans that are known by name only, those that nothing else covers by now.
void Salvage::countLost() {
  std::vector<TimeRange> lost;
  const auto coverage = target_.coverage();
  for (const auto& [rowid, trace] : traces_) {
    if (!trace.start || !trace.end || !(*trace.start < *trace.end)) continue;
    const double covered = coverage.covered(*trace.start, *trace.end);
    if (covered > (*trace.end - *trace.start) / 2) continue;
    ++report_.spansLost;
    lost.push_back({*trace.start, *trace.end});
  }
  std::sort(lost.begin(), lost.end(),
            [](const TimeRange& one, const TimeRange& other) { return one.start < other.start; });
  Coverage merged;
  for (const auto& range : lost) merged.add(range.start, range.end);
  report_.lostTime = merged.ranges();
}

SalvageReport Salvage::run() {
  walkTables();
  lookBetween();
  readPages();
  traceSpans();
  fillFromBackup();
  if (!stopped()) countLost();
  if (stopped()) {
    const bool asked = options_.stop.stop_requested();
    target_.discard();
    report_.sentence = asked ? "La récupération a été interrompue."
                             : "La récupération a échoué : le disque est plein.";
    return report_;
  }
  for (auto& table : report_.tables) {
    table.rejected = static_cast<int64_t>(unsound_[table.name].size());
  }
  report_.made = target_.finish();
  report_.sentence = report_.made ? salvageSentence(report_, options_.calendar, backupTime())
                                  : "La récupération a échoué : le disque est plein.";
  return report_;
}

SalvageReport failed(const char* sentence) {
  SalvageReport report;
  report.sentence = sentence;
  return report;
}

}  // namespace

bool SalvageReport::whole() const {
  return made && !logCut && spansLost == 0 &&
         std::all_of(tables.begin(), tables.end(), [](const Table& table) { return table.whole; });
}

SalvageReport salvage(const fs::path& damaged, const fs::path& fresh,
                      const SalvageOptions& options) {
  const auto scratch = ScratchFolder::make(fresh.string() + ".copie-");
  if (!scratch) return failed("La récupération a échoué : le dossier n’est pas accessible.");
  const auto copy = scratch->path() / "copie.db";
  std::error_code ignored;
  if (!copyWhatIsReadable(damaged, copy) ||
      (fs::exists(walOf(damaged), ignored) && !copyWhatIsReadable(walOf(damaged), walOf(copy)))) {
    return failed(
        "La récupération a échoué : le fichier n’est pas lisible ou le disque est plein.");
  }
  SalvageTarget target(fresh, options.prepareSchema);
  if (!target)
    return failed("La récupération a échoué : le nouveau fichier ne peut pas être créé.");
  return Salvage(copy, target, options).run();
}

}  // namespace orvanta
