#include "storage/store_check.h"

#include <fmt/format.h>

#include <system_error>

#include "base/text.h"
#include "storage/file_connection.h"
#include "storage/interrupter.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

// SQLite's words, in those of the user as far as they say something to him.
std::string inWords(std::string_view problem) {
  const auto text = validUtf8(problem);
  const auto has = [&](std::string_view words) { return text.find(words) != std::string::npos; };
  if (has("index") && (has("missing") || has("wrong # of entries") || has("non-unique"))) {
    return fmt::format("un index ne correspond pas à ses données ({})", text);
  }
  if (has("never used") || has("Freelist") || has("freelist")) {
    return fmt::format("la liste des pages libres est fausse ({})", text);
  }
  return fmt::format("une partie du fichier est abîmée ({})", text);
}

std::string whyUnreadable(int code, const std::string& message) {
  switch (code & 0xff) {
    case SQLITE_NOTADB:
      return "ce n’est pas une base de données";
    case SQLITE_CORRUPT:
      return "le fichier est abîmé";
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return "le fichier est verrouillé par un autre programme";
    case SQLITE_IOERR:
      return "le disque ne peut pas lire le fichier";
    default:
      return fmt::format("le fichier ne peut pas être lu ({})", validUtf8(message));
  }
}

bool interrupted(int code) {
  return (code & 0xff) == SQLITE_INTERRUPT;
}

// False when interrupted.
bool runCheck(const FileConnection& connection, bool full, std::vector<std::string>& problems) {
  constexpr std::size_t kMost = 50;
  const auto* sql = full ? "PRAGMA integrity_check(50)" : "PRAGMA quick_check(50)";
  const int code = connection.each(sql, {}, [&](const Cursor& row) {
    const auto text = row.str(0).value_or("");
    if (text != "ok" && problems.size() < kMost) problems.push_back(inWords(text));
  });
  if (interrupted(code)) return false;
  if (code != SQLITE_DONE) problems.push_back(whyUnreadable(code, connection.message()));
  return true;
}

bool lookForTables(const FileConnection& connection, std::vector<std::string>& problems) {
  for (const auto* table : {"events", "projects", "rules", "settings"}) {
    bool found = false;
    const int code = connection.each("SELECT 1 FROM sqlite_master WHERE type='table' AND name=?",
                                     {table}, [&](const Cursor&) { found = true; });
    if (interrupted(code)) return false;
    if (code != SQLITE_DONE) {
      problems.push_back(whyUnreadable(code, connection.message()));
      return true;
    }
    if (!found) problems.push_back(fmt::format("la table « {} » manque", table));
  }
  return true;
}

uint64_t bytesOfStore(const fs::path& file) {
  return bytesOf(file) + bytesOf(walOf(file));
}

void readFacts(const FileConnection& connection, StoreFacts& facts) {
  // Beyond the year 9999 lies no span, but what damage makes of one.
  constexpr double kEndOfTimes = 253402300800;
  facts.spans = connection.number("SELECT count(*) FROM events");
  facts.projects = connection.number("SELECT count(*) FROM projects");
  facts.rules = connection.number("SELECT count(*) FROM rules");
  const auto time = [&](const char* sql, std::optional<double>& into) {
    connection.each(sql, {kEndOfTimes}, [&](const Cursor& row) { into = row.dbl(0); });
  };
  time("SELECT start FROM events WHERE start < ? AND start > 0 ORDER BY start LIMIT 1",
       facts.first);
  time("SELECT end FROM events WHERE end < ? AND end > 0 ORDER BY end DESC LIMIT 1", facts.last);
}

}  // namespace

StoreFacts readStoreFacts(const fs::path& file) {
  StoreFacts facts{.bytes = bytesOfStore(file)};
  if (const auto connection = FileConnection::reading(file)) readFacts(connection, facts);
  return facts;
}

StoreCheck checkStore(const fs::path& file, const CheckOptions& options) {
  StoreCheck check;
  check.finished = true;
  std::error_code error;
  if (!fs::exists(file, error)) {
    check.problems.emplace_back(error ? "le fichier n’est pas accessible"
                                      : "le fichier n’existe pas");
    return check;
  }
  if (!fs::is_regular_file(file, error)) {
    check.problems.emplace_back("ce n’est pas un fichier");
    return check;
  }
  check.facts.bytes = bytesOfStore(file);
  const auto connection = FileConnection::reading(file);
  if (!connection) {
    check.problems.push_back(whyUnreadable(connection.code(), connection.message()));
    return check;
  }
  // Of one moment, although somebody may go on writing.
  connection.exec("BEGIN");
  {
    const Interrupter limit(connection.get(), options.stop, options.budget);
    check.finished =
        !limit.reached() && lookForTables(connection, check.problems) &&
        (!check.problems.empty() || runCheck(connection, options.full, check.problems));
  }
  if (!check.finished) {
    check.problems.clear();
    return check;
  }
  readFacts(connection, check.facts);
  check.whole = check.problems.empty();
  return check;
}

}  // namespace orvanta
