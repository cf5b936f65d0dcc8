#include "storage/store_copy.h"

#include <fmt/format.h>

#include <cerrno>
#include <chrono>
#include <map>
#include <memory>
#include <system_error>
#include <thread>

#include "base/low_priority.h"
#include "storage/file_connection.h"
#include "storage/scrub.h"
#include "storage/store_check.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

using SteadyClock = std::chrono::steady_clock;
constexpr auto kUnfinished = ".partiel";

using RowCounts = std::map<std::string, int64_t>;

struct Finish {
  void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
};

RowCounts rowCounts(const FileConnection& connection) {
  RowCounts counts;
  connection.each("SELECT name FROM sqlite_master WHERE type='table'", {},
                  [&](const Cursor& row) { counts.emplace(row.str(0).value_or(""), 0); });
  for (auto& [table, count] : counts) {
    count = connection.number("SELECT count(*) FROM " + quotedName(table));
  }
  return counts;
}

class Copy {
 public:
  Copy(const fs::path& store, const fs::path& target, const CopyOptions& options)
      : store_(store), target_(target), options_(options) {}

  CopyResult run() {
    const auto begin = SteadyClock::now();
    if (!roomFor() || !makeEmpty()) return result_;
    result_.made = copyPages() && settle() && check();
    if (!result_.made) removeDatabase(target_);
    result_.bytes = bytesOf(target_);
    result_.seconds = std::chrono::duration<double>(SteadyClock::now() - begin).count();
    return result_;
  }

 private:
  bool failed(const std::string& error) {
    result_.error = error;
    return false;
  }

  bool roomFor() {
    const auto needed = 2 * (bytesOf(store_) + bytesOf(walOf(store_)));
    const auto free = options_.freeSpace(target_.parent_path());
    if (!free || *free >= needed) return true;
    return failed(
        fmt::format("il n’y a pas assez de place sur le disque ({} libres, {} nécessaires)",
                    sizeInWords(*free), sizeInWords(needed)));
  }

  bool makeEmpty() {
    if (makeNewFile(target_)) return true;
    return failed(errno == EEXIST ? "le fichier existe déjà" : "le fichier ne peut pas être créé");
  }

  bool copyPages();
  bool copySteps(sqlite3_backup* backup);
  bool settle();
  bool check();

  const fs::path& store_;
  const fs::path& target_;
  const CopyOptions& options_;
  RowCounts counts_;
  CopyResult result_;
};

// In one read transaction. Without it every write to the store would begin the copy anew, and a
// large one would never end; with it nobody waits either, only the log is not shortened meanwhile.
// And the rows are counted in what is copied.
bool Copy::copyPages() {
  const auto source = FileConnection::reading(store_);
  const auto target = FileConnection::writing(target_);
  if (!source) return failed("la base ne peut pas être lue");
  if (!target) return failed("le fichier ne peut pas être créé");
  // Nobody needs what was begun; it is made durable at the end.
  target.exec("PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF");
  if (source.exec("BEGIN; SELECT count(*) FROM sqlite_master") != SQLITE_OK) {
    return failed("la base ne peut pas être lue");
  }
  counts_ = rowCounts(source);
  const std::unique_ptr<sqlite3_backup, Finish> backup(
      sqlite3_backup_init(target.get(), "main", source.get(), "main"));
  return backup ? copySteps(backup.get()) : failed("la copie ne peut pas commencer");
}

bool Copy::copySteps(sqlite3_backup* backup) {
  constexpr int kPages = 128;
  for (;;) {
    const auto begin = SteadyClock::now();
    const int code = sqlite3_backup_step(backup, kPages);
    if (code == SQLITE_DONE) return true;
    if (options_.stop.stop_requested()) {
      result_.stopped = true;
      return false;
    }
    if ((code & 0xff) == SQLITE_FULL) return failed("le disque est plein");
    if (code != SQLITE_OK && code != SQLITE_BUSY && code != SQLITE_LOCKED) {
      return failed(fmt::format("la copie a échoué ({})", sqlite3_errstr(code)));
    }
    std::this_thread::sleep_for(SteadyClock::now() - begin);
  }
}

// One file that holds everything, and nothing that was deleted.
bool Copy::settle() {
  {
    const auto copy = FileConnection::writing(target_);
    copy.exec("PRAGMA synchronous=OFF");
    std::string mode;
    copy.each("PRAGMA journal_mode=DELETE", {},
              [&](const Cursor& row) { mode = row.str(0).value_or(""); });
    if (mode != "delete") return failed("la copie ne peut pas être terminée");
  }
  if (!scrubUnusedBytes(target_) || !syncToDisk(target_)) {
    return failed("la copie ne peut pas être écrite sur le disque");
  }
  return true;
}

bool Copy::check() {
  const auto check = checkStore(target_, {.stop = options_.stop});
  if (!check.finished) {
    result_.stopped = true;
    return false;
  }
  if (!check.whole) return failed("la base est abîmée : " + check.problems.front());
  if (rowCounts(FileConnection::reading(target_)) != counts_) {
    return failed("la copie n’est pas complète");
  }
  return true;
}

}  // namespace

CopyResult copyStore(const fs::path& store, const fs::path& target, const CopyOptions& options) {
  CopyResult result;
  runAtLowPriority([&] { result = Copy(store, target, options).run(); });
  return result;
}

CopyResult backUpTo(const fs::path& store, const fs::path& target, const CopyOptions& options) {
  const auto folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  const auto temporary = folder / ("." + target.filename().string() + kUnfinished);
  removeDatabase(temporary);
  auto result = copyStore(store, temporary, options);
  if (!result.made) return result;
  errno = 0;
  result.made = (!options.finish || options.finish(temporary)) &&
                (options.replace ? std::rename(temporary.c_str(), target.c_str()) == 0
                                 : renameToNew(temporary, target)) &&
                syncToDisk(folder);
  if (!result.made) {
    result.error = errno == EEXIST ? "le fichier existe déjà" : "le fichier ne peut pas être créé";
    removeDatabase(temporary);
  }
  return result;
}

bool isUnfinishedCopy(const fs::path& file) {
  const auto name = file.filename().string();
  return name.starts_with('.') && name.find(kUnfinished) != std::string::npos;
}

std::string sizeInWords(uint64_t bytes) {
  constexpr uint64_t kTenth = 100'000;  // of a megabyte
  const auto tenths = (bytes + kTenth / 2) / kTenth;
  if (tenths == 0) return fmt::format("{} octets", bytes);
  return fmt::format("{},{} Mo", tenths / 10, tenths % 10);
}

}  // namespace orvanta
