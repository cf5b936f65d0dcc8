#include "app/store_commands.h"

#include <fmt/format.h>

#include <system_error>

#include "base/clock.h"
#include "storage/backup_names.h"
#include "storage/backups.h"
#include "storage/data_lock.h"
#include "storage/moving.h"
#include "storage/restore.h"
#include "storage/store_check.h"
#include "storage/store_copy.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongWords = 2 };

int failed(const std::string& message) {
  fmt::print(stderr, "Orvanta : {}\n", message);
  return kFailed;
}

int wrongWords(const char* usage) {
  fmt::print(stderr, "usage : orvanta {}\n", usage);
  return kWrongWords;
}

std::string counted(int64_t number, const char* one, const char* many) {
  return fmt::format("{} {}", number, number < 2 ? one : many);
}

std::string inWords(const StoreFacts& facts) {
  auto text = sizeInWords(facts.bytes) + ", " + counted(facts.spans, "activité", "activités");
  if (facts.first && facts.last) {
    const Calendar calendar;
    text += fmt::format(" du {} au {}", calendar.dateOf(*facts.first).iso(),
                        calendar.dateOf(*facts.last).iso());
  }
  return fmt::format("{}, {}, {}", text, counted(facts.projects, "projet", "projets"),
                     counted(facts.rules, "règle", "règles"));
}

bool printCheck(const std::string& name, const fs::path& file) {
  const auto check = checkStore(file, {.full = true});
  fmt::print("{} : {}\n", name, check.whole ? "intacte" : "ABÎMÉE");
  for (const auto& problem : check.problems) fmt::print("  - {}\n", problem);
  if (check.facts.spans > 0 || check.whole) fmt::print("  {}\n", inWords(check.facts));
  std::fflush(stdout);
  return check.whole;
}

// Never replaces a file. `target` is what it is called.
int copyTo(const std::vector<std::string>& words, const DataLocation& where, const char* usage,
           decltype(backUpTo)& copyStoreTo, fs::path& target) {
  if (words.size() != 1 || words.front().empty()) return wrongWords(usage);
  std::error_code error;
  if (!fs::exists(where.file(), error)) return failed("il n’y a encore rien à sauvegarder");
  target = words.front();
  if (fs::is_directory(target, error)) target /= backupName(wallClock(), 1, Calendar());
  // What is there may be the only copy of something.
  if (fs::exists(fs::symlink_status(target, error))) {
    return failed(fmt::format("{} existe déjà", target.string()));
  }
  const auto copy = copyStoreTo(where.file(), target, {});
  if (!copy.made) return failed("sauvegarde impossible : " + copy.error);
  fmt::print("Sauvegardé dans {} : {}\n", target.string(), inWords(readStoreFacts(target)));
  return kDone;
}

}  // namespace

int checkCommand(const DataLocation& where) {
  std::error_code error;
  if (!fs::exists(where.file(), error)) {
    return failed(fmt::format("il n’y a pas de base de données : {}", where.file().string()));
  }
  bool whole = printCheck("Base " + where.file().string(), where.file());
  for (const auto& backup : Backups(Backups::folderOf(where)).list()) {
    const bool good = printCheck("Sauvegarde " + backup.file.filename().string(), backup.file);
    whole = whole && good;
  }
  return whole ? kDone : kFailed;
}

int takeAllCommand(const std::vector<std::string>& words, const DataLocation& where) {
  fs::path target;
  const auto status = copyTo(words, where, "--take-all FICHIER", takeAll, target);
  if (status != kDone) return status;
  fmt::print(
      "Sur l’autre ordinateur : « Reprendre » dans l’accueil ou dans Réglages → Données, ou "
      "orvanta --restore {}\n",
      target.filename().string());
  return kDone;
}

int backupCommand(const std::vector<std::string>& words, const DataLocation& where) {
  fs::path target;
  return copyTo(words, where, "--backup FICHIER", backUpTo, target);
}

int restoreCommand(const std::vector<std::string>& words, const DataLocation& where) {
  if (words.size() != 1 || words.front().empty()) return wrongWords("--restore FICHIER");
  std::error_code error;
  if (!fs::is_regular_file(words.front(), error)) {
    return failed(fmt::format("{} n’existe pas", words.front()));
  }
  prepare(where, systemLog);
  const auto lock = DataLock::take(where);
  if (!lock) return failed("le programme est en marche ; quittez-le avant de restaurer");
  const auto result = restoreStore(where, words.front(), {.now = wallClock()});
  if (!result.done) return failed("restauration impossible : " + result.error);
  fmt::print("Restauré : {}\n", inWords(readStoreFacts(where.file())));
  if (result.kept) fmt::print("L’ancien fichier est gardé : {}\n", result.kept->string());
  return kDone;
}

}  // namespace orvanta
