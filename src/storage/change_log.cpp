#include "storage/change_log.h"

#include <algorithm>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value_to.hpp>
#include <cmath>
#include <memory>
#include <string_view>

#include "base/packed.h"
#include "base/text.h"
#include "storage/changeset.h"
#include "storage/id_marks.h"

namespace orvanta::change_log {
namespace {

namespace json = boost::json;

constexpr double kKeptFor = 90 * 86400.0;  // seconds
constexpr int64_t kSmallestRoom = int64_t{1} << 20;
constexpr int64_t kLargestRoom = 20'000'000;
constexpr int64_t kShare = 20;  // of the store

struct Close {
  void operator()(sqlite3_blob* blob) const { sqlite3_blob_close(blob); }
};
using Blob = std::unique_ptr<sqlite3_blob, Close>;

// Values of this kind are written and read in place: no statement of ours has any.
Blob openBlob(sqlite3* connection, const char* column, int64_t id, bool write) {
  sqlite3_blob* raw = nullptr;
  sqlite3_blob_open(connection, "main", "changes", column, id, write ? 1 : 0, &raw);
  return Blob(raw);
}

void writeBlob(Transaction& change, const char* column, int64_t id, const std::string& bytes) {
  if (!change) return;
  const auto blob = openBlob(change.connection(), column, id, true);
  const auto size = static_cast<int>(bytes.size());
  if (!blob || sqlite3_blob_write(blob.get(), bytes.data(), size, 0) != SQLITE_OK) {
    change.fail(sqlite3_extended_errcode(change.connection()));
  }
}

// NULL is nothing, too.
std::optional<std::string> readBlob(sqlite3* connection, const char* column, int64_t id) {
  const auto blob = openBlob(connection, column, id, false);
  if (!blob) return {};
  std::string bytes(static_cast<std::size_t>(sqlite3_blob_bytes(blob.get())), '\0');
  const auto size = static_cast<int>(bytes.size());
  if (sqlite3_blob_read(blob.get(), bytes.data(), size, 0) != SQLITE_OK) return {};
  return unpacked(bytes);
}

// What a row takes of the file: a large one has pages of its own.
int64_t roomOf(std::size_t payload) {
  constexpr std::size_t kHead = 100;
  constexpr std::size_t kSmall = 500;
  constexpr std::size_t kPage = 1000;
  payload += kHead;
  return static_cast<int64_t>(payload < kSmall ? payload : (payload / kPage + 2) * kPage);
}

int64_t roomFor(Transaction& change) {
  int64_t store = 0;
  change.each("SELECT page_count * page_size FROM pragma_page_count, pragma_page_size", {},
              [&](const Cursor& row) { store = row.int_(0).value_or(0); });
  return std::clamp(store / kShare, kSmallestRoom, kLargestRoom);
}

bool fitsIn(int64_t room, const std::string& packed) {
  return roomOf(packed.size()) <= room / 2;
}

void trim(Transaction& change, double now, int64_t room) {
  change.run("DELETE FROM changes WHERE at < ?", {now - kKeptFor});
  int64_t taken = 0;
  change.each("SELECT sum(bytes) FROM changes", {},
              [&](const Cursor& row) { taken = row.int_(0).value_or(0); });
  if (taken <= room) return;
  change.run(
      "DELETE FROM changes WHERE id <= (SELECT max(id) FROM "
      "(SELECT id, sum(bytes) OVER (ORDER BY id DESC) AS taken FROM changes) WHERE taken > ?)",
      {room});
}

// By which erasing finds the entry: lines of lower-case text.
std::string wordsOf(const std::string& changeset) {
  std::string words;
  for (const auto& text : ownTexts(changeset)) words += lowerCase(text) + '\n';
  return words;
}

void insert(Transaction& change, double now, const ChangeNote& note, const std::string& changeset,
            int64_t& id) {
  const auto room = roomFor(change);
  auto bytes = changeset.empty() ? std::string() : packed(changeset);
  // One that is larger than all that may be kept is listed and stays.
  if (!fitsIn(room, bytes)) bytes.clear();
  const auto held = bytes.empty() ? std::nullopt : heldSpans(changeset);
  const auto words = wordsOf(changeset);
  const auto learned =
      json::serialize(json::array(note.learnedRules.begin(), note.learnedRules.end()));
  const Value none;
  id = change.run(
      "INSERT INTO changes(at, kind, label, spans, seconds, learned, undone, bytes, held_from, "
      "held_to, titled_from, words, changeset) VALUES (?1,?2,?3,?4,?5,?6,0,?7,?8,?9,?10,?11,"
      "CASE WHEN ?12 > 0 THEN zeroblob(?12) END)",
      {now, note.kind, note.label, note.spans,
       // No list of changes can tell of a span that never ends.
       std::isfinite(note.seconds) ? note.seconds : 0, learned,
       roomOf(bytes.size() + note.label.size() + learned.size() + words.size()),
       held ? Value(held->from) : none, held ? Value(held->to) : none,
       held ? Value(held->titledFrom) : none, words.empty() ? none : Value(words),
       static_cast<int64_t>(bytes.size())});
  if (!bytes.empty()) writeBlob(change, "changeset", id, bytes);
  raiseMarks(change, highestIds(changeset));
  trim(change, now, room);
}

Change read(const Cursor& row) {
  Change change;
  change.id = row.int_(0).value_or(0);
  change.at = row.dbl(1);
  change.note = {.kind = std::string(row.str(2).value_or("")),
                 .label = std::string(row.str(3).value_or("")),
                 .spans = row.int_(4).value_or(0),
                 .seconds = row.dbl(5),
                 .learnedRules = {}};
  boost::system::error_code ignored;
  const auto learned = json::parse(row.str(6).value_or(""), ignored);
  if (const auto* ids = learned.if_array()) {
    for (const auto& id : *ids) {
      if (id.is_int64()) change.note.learnedRules.push_back(id.get_int64());
    }
  }
  change.undone = row.int_(7).value_or(0) != 0;
  change.undoable = row.int_(8).value_or(0) != 0;
  change.effect = row.str(9).value_or("");
  return change;
}

bool spanGone(Transaction& change, const Touched& touched) {
  constexpr std::string_view kTable = "events|";
  for (auto row = touched.lower_bound(kTable);
       row != touched.end() && row->first.starts_with(kTable); ++row) {
    bool there = false;
    const auto key = std::string_view(row->first).substr(kTable.size());
    change.each("SELECT 1 FROM events WHERE id=CAST(? AS INTEGER)", {key},
                [&](const Cursor&) { there = true; });
    if (!there) return true;
  }
  return false;
}

// The examples of an effect stand beside it: they name what was recorded, and leave when something
// is erased.
struct Measured {
  std::string figures;
  json::array examples;
};

std::optional<Measured> parted(const std::string& effect) {
  boost::system::error_code broken;
  auto parsed = json::parse(effect, broken);
  if (broken || !parsed.is_object()) return {};
  auto& object = parsed.get_object();
  Measured measured;
  if (auto* examples = object.if_contains("examples"); examples && examples->is_array()) {
    measured.examples = std::move(examples->get_array());
  }
  object["examples"] = json::array();
  for (auto& example : measured.examples) {
    if (example.is_object()) example.get_object()["title"] = nullptr;
  }
  measured.figures = json::serialize(object);
  return measured;
}

}  // namespace

std::optional<std::vector<Change>> list(Database& db, double now, std::size_t most) {
  std::vector<Change> changes;
  const bool all = db.each(
      "SELECT id, at, kind, label, spans, seconds, learned, undone, changeset IS NOT NULL, "
      "CASE WHEN examples IS NULL THEN effect ELSE json_set(effect, '$.examples', json(examples)) "
      "END FROM changes WHERE at >= ? ORDER BY id DESC LIMIT ?",
      {now - kKeptFor, static_cast<int64_t>(std::min<std::size_t>(most, INT32_MAX))},
      [&](const Cursor& row) { changes.push_back(read(row)); });
  return all ? std::optional(std::move(changes)) : std::nullopt;
}

bool fits(Transaction& change, const std::string& changeset) {
  return fitsIn(roomFor(change), packed(changeset));
}

int64_t add(Transaction& change, double now, const ChangeNote& note, const std::string& changeset) {
  if (!change) return -1;
  int64_t id = -1;
  Transaction entry(change.database());
  insert(entry, now, note, changeset, id);
  const auto written = entry.commit();
  if (written) return id;
  if ((written.code() & 0xff) != SQLITE_ERROR) change.fail(written.code());
  return -1;
}

void setEffect(Transaction& change, double now, int64_t id, const std::string& effect) {
  const auto measured = parted(effect);
  if (!measured) return;
  const auto examples = json::serialize(measured->examples);
  // What was erased while it was measured is named no more.
  change.run(
      "UPDATE changes SET effect=?2, bytes=bytes+?4, examples=CASE WHEN NOT EXISTS "
      "(SELECT 1 FROM changes WHERE id > ?1 AND kind=?5) THEN ?3 END WHERE id=?1",
      {id, measured->figures, examples, roomOf(measured->figures.size() + examples.size()),
       kErase});
  trim(change, now, roomFor(change));
}

std::optional<Kept> find(Transaction& change, int64_t id) {
  std::optional<Kept> kept;
  change.each("SELECT kind, undone FROM changes WHERE id=? AND changeset IS NOT NULL", {id},
              [&](const Cursor& row) {
                kept = Kept{.changeset = {},
                            .kind = std::string(row.str(0).value_or("")),
                            .undone = row.int_(1).value_or(0) != 0};
              });
  if (!kept) return {};
  auto changeset = readBlob(change.connection(), "changeset", id);
  if (!changeset) return {};
  kept->changeset = std::move(*changeset);
  return kept;
}

void setUndone(Transaction& change, int64_t id, bool undone) {
  change.run("UPDATE changes SET undone=? WHERE id=?", {undone, id});
}

std::string inTheWay(Transaction& change, int64_t id, const std::string& changeset) {
  struct Other {
    int64_t id;
    std::string label;
    bool erases;
  };
  std::vector<Other> others;
  change.each(
      "SELECT id, label, kind=?2 FROM changes WHERE id <> ?1 AND (id > ?1) = (undone = 0) "
      "AND (changeset IS NOT NULL OR kind=?2) ORDER BY id DESC",
      {id, kErase}, [&](const Cursor& row) {
        others.push_back({row.int_(0).value_or(0), std::string(row.str(1).value_or("")),
                          row.int_(2).value_or(0) != 0});
      });
  const auto touched = touchedBy(changeset);
  for (const auto& [other, label, erases] : others) {
    if (erases) {
      if (spanGone(change, touched)) return label;
      continue;
    }
    const auto bytes = readBlob(change.connection(), "changeset", other);
    if (bytes && meet(touched, touchedBy(*bytes))) return label;
  }
  return {};
}

}  // namespace orvanta::change_log
