#include "storage/activity_index.h"

#include <algorithm>
#include <string>
#include <system_error>

#include "base/low_priority.h"
#include "base/own_file.h"
#include "storage/transaction.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

constexpr auto kSpansOfDays =
    "SELECT id,start,end,app,domain,title,url,idle,category,project_id FROM events "
    "WHERE start >= ? AND start < ? ORDER BY start";

constexpr auto kEarliest =
    "SELECT start FROM events WHERE start >= ? AND start < ? ORDER BY start LIMIT 1";

// Before the first chunk lies what a wrong clock has recorded: that is left to the store.
constexpr int64_t kFirstChunk = 1;

// The days of a chunk that are over.
std::pair<int64_t, int64_t> daysOf(int64_t chunk, int64_t today) {
  return {chunk * kChunkDays, std::min((chunk + 1) * kChunkDays, today)};
}

// Those of `from` until `to`.
StampedDays part(const StampedDays& stamps, int64_t from, int64_t to) {
  const auto before = [](const StampedDay& one, int64_t day) { return one.day < day; };
  const auto begin = std::lower_bound(stamps.begin(), stamps.end(), from, before);
  return {begin, std::lower_bound(begin, stamps.end(), to, before)};
}

bool includes(const StampedDays& all, const StampedDays& some) {
  return std::includes(all.begin(), all.end(), some.begin(), some.end());
}

void ignored(const Cursor&) {}

AskStore asking(Connection& store) {
  return [&store](std::string_view sql, const std::function<void(const Cursor&)>& visit) {
    auto* statement = store.prepared(sql);
    return statement && statement->visitRows({}, visit) == SQLITE_DONE;
  };
}

}  // namespace

fs::path activityFolder(const DataLocation& where) {
  return where.dir / "activites";
}

fs::path activityFile(const DataLocation& where, int64_t chunk) {
  return activityFolder(where) / std::to_string(chunk);
}

std::optional<StampedDays> readStamps(const AskStore& ask) {
  bool has = false;
  StampedDays days;
  const bool read =
      ask("SELECT 1 FROM sqlite_master WHERE name='indexed_days'",
          [&](const Cursor&) { has = true; }) &&
      (!has || ask("SELECT day, stamp FROM indexed_days ORDER BY day", [&](const Cursor& row) {
        days.push_back({row.int_(0).value_or(0), row.int_(1).value_or(0)});
      }));
  return read ? std::optional(std::move(days)) : std::nullopt;
}

// The file is read once, and known from then on.
bool ActivityIndex::upToDate(int64_t chunk, const StampedDays& stamps, int64_t today) {
  const auto [from, to] = daysOf(chunk, today);
  const auto wanted = part(stamps, from, to);
  if (static_cast<int64_t>(wanted.size()) < to - from) return false;
  const auto file = activityFile(db_.location(), chunk);
  auto known = known_.find(chunk);
  std::error_code error;
  if (known != known_.end() && !fs::exists(file, error)) known->second.clear();
  if (known == known_.end()) {
    known = known_.emplace(chunk, ActivityChunk::daysOf(file).value_or(StampedDays())).first;
  }
  return includes(known->second, wanted);
}

// Of its own connection, so that no report waits for a thread that gives way to everybody. First
// the stamps, then what they stand for, if they still do: a change in between removes them.
bool ActivityIndex::make(Connection& store, int64_t chunk, int64_t today) {
  const auto [from, to] = daysOf(chunk, today);
  {
    Transaction change(db_);
    for (auto day = from; day < to; ++day) {
      change.run("INSERT OR IGNORE INTO indexed_days(day, stamp) VALUES (?, random())", {day});
    }
    if (!change.commit()) return false;
  }
  bool made = false;
  runAtLowPriority([&, from = from, to = to] {
    const auto ask = asking(store);
    if (!ask("BEGIN", ignored)) return;
    ChunkMaker maker(part(readStamps(ask).value_or(StampedDays()), from, to));
    auto* spans = store.prepared(kSpansOfDays);
    made = spans && spans->visitRows({startOfDay(from), startOfDay(to)},
                                     [&](const Cursor& row) { maker.add(row); }) == SQLITE_DONE;
    ask("COMMIT", ignored);
    made = made && !writeOwnFile(activityFile(db_.location(), chunk), maker.finish().bytes());
  });
  known_.erase(chunk);
  return made;
}

bool ActivityIndex::step() {
  const auto begin = std::exchange(next_, 0);
  Connection store(db_.location().file(), Connection::kForReports);
  const auto stamps = store ? readStamps(asking(store)) : std::nullopt;
  const double now = clock_();
  constexpr auto kFirstDay = kFirstChunk * kChunkDays;
  if (!stamps || !(now >= startOfDay(kFirstDay))) return false;
  const auto today = dayOf(now);
  std::optional<double> first;
  auto* earliest = store.prepared(kEarliest);
  if (!earliest) return false;
  earliest->visitRows({startOfDay(kFirstDay), startOfDay(today)},
                      [&](const Cursor& row) { first = row.dbl(0); });
  if (!first) return false;
  for (auto chunk = std::max(begin, dayOf(*first) / kChunkDays); chunk * kChunkDays < today;
       ++chunk) {
    if (upToDate(chunk, *stamps, today)) continue;
    if (!make(store, chunk, today)) return false;
    next_ = chunk + 1;
    return true;
  }
  return false;
}

bool ActivityIndex::removeStale() {
  Connection store(db_.location().file(), Connection::kForReports);
  const auto stamps = store ? readStamps(asking(store)) : std::nullopt;
  bool clean = true;
  std::error_code error;
  for (fs::directory_iterator entry(activityFolder(db_.location()), error), end;
       !error && entry != end; entry.increment(error)) {
    const auto days = stamps ? ActivityChunk::daysOf(entry->path()) : std::nullopt;
    if (days && includes(*stamps, *days)) continue;
    std::error_code failed;
    fs::remove(entry->path(), failed);
    clean = clean && !failed;
  }
  known_.clear();
  return clean;
}

}  // namespace orvanta
