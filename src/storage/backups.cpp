#include "storage/backups.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <set>
#include <system_error>
#include <tuple>
#include <utility>

#include "storage/backup_names.h"
#include "storage/file_connection.h"
#include "storage/scrub.h"
#include "storage/store_check.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

constexpr double kDay = 86400;
constexpr int kWeek = 7;
constexpr uint64_t kLargeStore = 100'000'000;
constexpr std::size_t kDaysKept = 3;
constexpr std::size_t kWeeksKept = 4;

// The files that are not to be removed, of `backups` in the order of their worth.
std::set<fs::path> worthKeeping(const std::vector<Backup>& backups, const Calendar& calendar) {
  std::set<std::string> days;
  std::set<std::string> weeks;
  std::set<fs::path> kept;
  const auto newestOf = [](std::set<std::string>& periods, std::size_t most, const Date& first) {
    return periods.size() < most && periods.insert(first.iso()).second;
  };
  for (const auto& backup : backups) {
    const auto date = calendar.dateOf(backup.time);
    const bool ofDay = newestOf(days, kDaysKept, date);
    const bool ofWeek = newestOf(weeks, kWeeksKept, date.monday());
    if (ofDay || ofWeek) kept.insert(backup.file);
  }
  return kept;
}

bool committed(const FileConnection& connection, const Erasure& erasure) {
  // In a rollback journal what is erased would be in a second file, which is gone afterwards.
  return connection &&
         connection.exec("PRAGMA journal_mode=DELETE; PRAGMA secure_delete=ON; BEGIN IMMEDIATE") ==
             SQLITE_OK &&
         run(erasure, connection.get()) == SQLITE_OK && connection.exec("COMMIT") == SQLITE_OK;
}

}  // namespace

bool eraseFromCopy(const fs::path& file, const Erasure& erasure) {
  const auto time = modifiedAt(file);
  const bool erased = committed(FileConnection::writing(file), erasure) && scrubUnusedBytes(file) &&
                      syncToDisk(file);
  setModifiedAt(file, time);
  std::error_code error;
  return erased && !fs::exists(file.string() + "-journal", error);
}

Backups::Backups(fs::path folder) : Backups(std::move(folder), Surroundings()) {}

Backups::Backups(fs::path folder, Surroundings surroundings)
    : folder_(std::move(folder)), surroundings_(std::move(surroundings)) {}

fs::path Backups::folderOf(const DataLocation& where) {
  return where.dir / "sauvegardes";
}

std::vector<Backup> Backups::list() const {
  std::vector<std::pair<BackupName, Backup>> found;
  std::error_code error;
  for (fs::directory_iterator entry(folder_, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code ignored;
    if (!fs::is_regular_file(entry->symlink_status(ignored))) continue;
    const auto name = readBackupName(entry->path(), surroundings_.calendar);
    if (!name) continue;
    found.emplace_back(*name, Backup{entry->path(), name->time, bytesOf(entry->path())});
  }
  std::sort(found.begin(), found.end(), [](const auto& one, const auto& other) {
    return std::tie(other.first.time, other.first.number) <
           std::tie(one.first.time, one.first.number);
  });
  std::vector<Backup> backups;
  backups.reserve(found.size());
  for (auto& [name, backup] : found) backups.push_back(std::move(backup));
  return backups;
}

bool Backups::due(double now, uint64_t storeBytes) const {
  const auto backups = list();
  const auto last = std::find_if(backups.begin(), backups.end(),
                                 [&](const Backup& backup) { return backup.time <= now + kDay; });
  if (last == backups.end()) return true;
  const auto& calendar = surroundings_.calendar;
  const int pause = storeBytes > kLargeStore ? kWeek : 1;
  return calendar.dateOf(last->time).plusDays(pause).iso() <= calendar.dateOf(now).iso();
}

bool Backups::prepareFolder() const {
  std::error_code error;
  fs::create_directories(folder_.parent_path(), error);
  mkdir(folder_.c_str(), S_IRWXU);
  chmod(folder_.c_str(), S_IRWXU);
  return fs::is_directory(folder_, error);
}

void Backups::removeUnfinished() const {
  std::error_code error;
  for (fs::directory_iterator entry(folder_, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code ignored;
    if (isUnfinishedCopy(entry->path())) fs::remove(entry->path(), ignored);
  }
}

fs::path Backups::newName(double now) const {
  // Above those of this minute, also where some of them are gone: the newest is the highest.
  const auto stamp = fs::path(backupName(now, 1, surroundings_.calendar)).stem().string();
  int number = 1;
  for (const auto& backup : list()) {
    if (!backup.file.stem().string().starts_with(stamp)) continue;
    const auto named = readBackupName(backup.file, surroundings_.calendar);
    if (named) number = std::max(number, named->number + 1);
  }
  for (std::error_code ignored;; ++number) {
    auto file = folder_ / backupName(now, number, surroundings_.calendar);
    if (!fs::exists(fs::symlink_status(file, ignored))) return file;
  }
}

CopyResult Backups::make(const fs::path& store, double now, const std::stop_token& stop) {
  const std::lock_guard lock(mutex_);
  CopyResult result;
  if (prepareFolder()) {
    removeUnfinished();
    const auto file = newName(now);
    result = backUpTo(store, file, {.stop = stop, .freeSpace = surroundings_.freeSpace});
    if (result.made) {
      setModifiedAt(file, now);
      lastMade_ = result.file = file;
    }
  } else {
    result.error = fmt::format("le dossier {} ne peut pas être créé", folder_.string());
  }
  if (!result.error.empty()) surroundings_.log("Orvanta: sauvegarde impossible : " + result.error);
  return result;
}

void Backups::prune(double now) {
  const std::lock_guard lock(mutex_);
  auto backups = list();
  // Those of the future were made while the clock was wrong: they count last.
  std::stable_partition(backups.begin(), backups.end(),
                        [&](const Backup& backup) { return backup.time <= now + kDay; });
  const auto kept = worthKeeping(backups, surroundings_.calendar);
  bool goodOneKept = false;
  for (const auto& backup : backups) {
    if (!kept.contains(backup.file)) {
      if (goodOneKept) remove(backup, "plus récentes gardées");
      continue;
    }
    // Looked at only where something is to go after it.
    if (goodOneKept || kept.size() == backups.size()) continue;
    goodOneKept = backup.file == lastMade_ || checkStore(backup.file).whole;
  }
}

bool Backups::remove(const Backup& backup, const char* why) const {
  const bool gone = removeDatabase(backup.file);
  surroundings_.log(fmt::format("Orvanta: sauvegarde {} {} : {}", backup.file.filename().string(),
                                gone ? "retirée" : "impossible à retirer", why));
  return gone;
}

ErasedBackups Backups::apply(const Erasure& erasure) {
  const std::lock_guard lock(mutex_);
  ErasedBackups result;
  removeUnfinished();
  for (const auto& backup : list()) {
    if (eraseFromCopy(backup.file, erasure)) {
      ++result.rewritten;
    } else if (remove(backup, "ce qui a été effacé n’a pas pu y être effacé")) {
      ++result.removed;
    } else {
      result.left.push_back(backup.file);
    }
  }
  return result;
}

}  // namespace orvanta
