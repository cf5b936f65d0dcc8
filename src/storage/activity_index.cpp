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

constexpr auto kList = "liste";

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

ActivityList activityList(const DataLocation& where) {
  return ActivityList(activityFolder(where) / kList);
}

bool ActivityIndex::Truth::agrees(const std::optional<Facts>& facts) const {
  return facts && includes(stamps, facts->days) &&
         (facts->part == 0 || std::find(parts.begin(), parts.end(), facts->part) != parts.end());
}

std::optional<ActivityIndex::Truth> ActivityIndex::truth(Connection& store) const {
  auto stamps = store ? readStamps(asking(store)) : std::nullopt;
  if (!stamps) return {};
  return Truth{std::move(*stamps), activityList(db_.location()).parts()};
}

// The file is read once, and known from then on.
const std::optional<ActivityChunk::Facts>& ActivityIndex::known(int64_t chunk) {
  const auto file = activityFile(db_.location(), chunk);
  std::error_code error;
  if (!fs::exists(file, error)) return known_[chunk] = Facts();
  const auto known = known_.find(chunk);
  if (known != known_.end() && known->second) return known->second;
  return known_[chunk] = ActivityChunk::factsOf(file);
}

bool ActivityIndex::upToDate(int64_t chunk, const Truth& truth, int64_t today) {
  const auto [from, to] = daysOf(chunk, today);
  const auto wanted = part(truth.stamps, from, to);
  if (static_cast<int64_t>(wanted.size()) < to - from) return false;
  const auto& facts = known(chunk);
  return facts && truth.agrees(facts) && includes(facts->days, wanted);
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
    if (!numbers_) numbers_.emplace(activityList(db_.location()));
    ChunkMaker maker(part(readStamps(ask).value_or(StampedDays()), from, to), *numbers_);
    auto* spans = store.prepared(kSpansOfDays);
    made = spans && spans->visitRows({startOfDay(from), startOfDay(to)},
                                     [&](const Cursor& row) { maker.add(row); }) == SQLITE_DONE;
    ask("COMMIT", ignored);
    // Until the list has what it names it is worth nothing; the other way round the list might keep
    // what no file uses.
    made = made && !writeOwnFile(activityFile(db_.location(), chunk), maker.finish().bytes()) &&
           numbers_->store();
  });
  known_.erase(chunk);
  if (!made) numbers_.reset();
  return made;
}

bool ActivityIndex::step() {
  const auto begin = std::exchange(next_, 0);
  Connection store(db_.location().file(), Connection::kForReports);
  const auto truth = this->truth(store);
  const double now = clock_();
  constexpr auto kFirstDay = kFirstChunk * kChunkDays;
  if (!truth || !(now >= startOfDay(kFirstDay))) return false;
  const auto today = dayOf(now);
  std::optional<double> first;
  auto* earliest = store.prepared(kEarliest);
  if (!earliest) return false;
  earliest->visitRows({startOfDay(kFirstDay), startOfDay(today)},
                      [&](const Cursor& row) { first = row.dbl(0); });
  if (!first) return false;
  if (numbers_ && (truth->parts.empty() || truth->parts.back() != numbers_->part())) {
    numbers_.reset();
  }
  for (auto chunk = std::max(begin, dayOf(*first) / kChunkDays); chunk * kChunkDays < today;
       ++chunk) {
    if (upToDate(chunk, *truth, today)) continue;
    if (!truth->agrees(known(chunk))) runAtLowPriority([this] { removeStale(); });
    if (!make(store, chunk, today)) return false;
    next_ = chunk + 1;
    return true;
  }
  numbers_.reset();
  return false;
}

ActivityIndex::Files ActivityIndex::files() const {
  Connection store(db_.location().file(), Connection::kForReports);
  const auto truth = this->truth(store);
  Files files;
  std::error_code error;
  for (fs::directory_iterator entry(activityFolder(db_.location()), error), end;
       !error && entry != end; entry.increment(error)) {
    if (entry->path().filename() == kList) continue;
    const bool good = truth && truth->agrees(ActivityChunk::factsOf(entry->path()));
    (good ? files.good : files.stale).push_back(entry->path());
  }
  return files;
}

bool ActivityIndex::removeStale() {
  auto [good, stale] = files();
  std::vector<bool> used;
  ActivityChunk chunk;
  for (const auto& file : good) {
    if (!chunk.read(file)) {
      stale.push_back(file);
      continue;
    }
    for (const auto& record : chunk.records) {
      if (used.size() <= record.activity) used.resize(std::size_t{record.activity} + 1);
      used[record.activity] = true;
    }
  }
  bool clean = activityList(db_.location()).keepOnly(used);
  for (const auto& file : stale) {
    std::error_code failed;
    fs::remove(file, failed);
    clean = clean && !failed;
  }
  known_.clear();
  numbers_.reset();
  return clean;
}

bool ActivityIndex::removeIfStale() {
  return files().stale.empty() || removeStale();
}

}  // namespace orvanta
