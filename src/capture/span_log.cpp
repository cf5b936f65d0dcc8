#include "capture/span_log.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace orvanta {
namespace {

// A day of spans of ten seconds, each with a title and an address of some hundred bytes.
constexpr std::size_t kMostBytes = std::size_t{8} << 20;
constexpr std::size_t kMostAtOnce = 500;  // spans; some milliseconds
// Spans that are kept to be shortened. Of ten seconds each, they are of twenty minutes.
constexpr std::size_t kMostUnsettled = 128;

std::size_t sizeOf(const SpanRecord& span) {
  const auto length = [](const std::optional<std::string>& text) {
    return text ? text->capacity() : 0;
  };
  return sizeof(SpanRecord) + 4 * sizeof(void*) + span.app.capacity() + length(span.bundle) +
         length(span.title) + length(span.url) + length(span.domain);
}

}  // namespace

void SpanLog::open(SpanRecord span) {
  if (open_) close(span.start);
  if (entries_.empty()) generation_ = db_.generation();
  // Nothing is known of the time before.
  if (entries_.empty()) settled_ = std::max(settled_, span.start);
  entries_.push_back({.span = std::move(span)});
  auto& entry = entries_.back();
  bytes_ += sizeOf(entry.span);
  entry.kept = entries_.size() == 1 || bytes_ <= kMostBytes;
  open_ = true;
}

void SpanLog::extend(double end) {
  if (open_) entries_.back().span.end = end;
}

void SpanLog::describe(const std::optional<std::string>& title,
                       const std::optional<std::string>& url) {
  if (!open_) return;
  auto& entry = entries_.back();
  if (entry.span.title == title && entry.span.url == url) return;
  bytes_ -= sizeOf(entry.span);
  entry.span.title = title;
  entry.span.url = url;
  bytes_ += sizeOf(entry.span);
  entry.titleStored = false;
}

void SpanLog::close(double end) {
  if (!open_) return;
  extend(end);
  open_ = false;
  if (entries_.back().kept) return;
  bytes_ -= sizeOf(entries_.back().span);
  entries_.pop_back();
}

// Those that are only kept to be shortened do not wait.
std::size_t SpanLog::weight(const Entry& entry) {
  return entry.bare ? 0 : sizeOf(entry.span);
}

void SpanLog::endBy(double end) {
  if (open_) return;
  for (auto& entry : entries_) {
    if (entry.final || (entry.span.end <= end && entry.span.start < end)) continue;
    entry.gone = entry.span.start >= end;
    entry.span.end = std::max(entry.span.start, end);
  }
  dropGone();
}

// Those that have no row, or none any more.
void SpanLog::dropGone() {
  std::erase_if(entries_, [&](const Entry& entry) {
    const bool nowhere = entry.gone && entry.id < 1;
    if (nowhere) bytes_ -= weight(entry);
    return nowhere;
  });
}

void SpanLog::settle(double until) {
  for (std::size_t i = 0; i < closed(); ++i) entries_[i].final = true;
  retire();
  settled_ = until;
}

void SpanLog::hold(double now) {
  settle(std::max(settled_, now));
  held_ = true;
}

bool SpanLog::stored(const Entry& entry) const {
  return entry.id > 0 && !entry.gone && entry.storedEnd == entry.span.end && entry.titleStored;
}

int64_t SpanLog::openId() const {
  return open_ ? entries_.back().id : -1;
}

std::size_t SpanLog::waiting() const {
  return static_cast<std::size_t>(std::count_if(
      entries_.begin(), entries_.end(), [&](const Entry& entry) { return !stored(entry); }));
}

void SpanLog::forgetProject(int64_t project) {
  for (auto& entry : entries_) {
    if (entry.span.project == project) entry.span.project.reset();
  }
}

Written SpanLog::write(Patience patience) {
  if (held_) return Written::failed(SQLITE_BUSY);
  if (generation_ != db_.generation()) {
    generation_ = db_.generation();
    // Those of the other file are not ours to change.
    std::erase_if(entries_, [&](const Entry& entry) { return entry.bare; });
    for (auto& entry : entries_) entry.id = -1;
    keptInput_ = {.span = -1};  // whatever that one keeps
    dropGone();
  }
  do {
    if (auto written = writeSome(patience); !written) return written;
    retire();
    // One that began when there was no room has room now.
    if (open_ && waiting() == 1) entries_.back().kept = true;
  } while (waiting() > 0 && patience == Patience::Usual);
  return waiting() == 0 ? Written::stored() : Written::failed(SQLITE_BUSY);
}

Written SpanLog::writeSome(Patience patience) {
  if (waiting() == 0) return Written::stored();
  Transaction change(db_, patience);
  std::vector<std::pair<Entry*, int64_t>> rows;
  int64_t open = openId();
  // Rows go last, so that what comes in their place is not given their ids.
  for (const bool gone : {false, true}) {
    for (auto& entry : entries_) {
      if (rows.size() == kMostAtOnce) break;
      if (entry.gone != gone || !entry.kept || stored(entry)) continue;
      rows.emplace_back(&entry, put(change, entry));
      if (open_ && &entry == &entries_.back()) open = rows.back().second;
    }
  }
  const auto input = inputToKeep(open);
  if (input != keptInput_) last_input::keep(change, input);
  auto written = change.commit();
  if (!written) return written;
  keptInput_ = input;
  for (const auto& [entry, id] : rows) {
    entry->id = id;
    entry->storedEnd = entry->span.end;
    entry->titleStored = true;
  }
  dropGone();
  return written;
}

last_input::Kept SpanLog::inputToKeep(int64_t open) const {
  if (!lastInput_ || open < 1) return {};
  return {open, *lastInput_};
}

// Only its times may still change.
void SpanLog::forgetTexts(Entry& entry) {
  bytes_ -= weight(entry);
  entry.bare = true;
  entry.span = {.start = entry.span.start, .end = entry.span.end};
}

// What is stored and closed is kept only as long as it may be shortened.
void SpanLog::retire() {
  while (closed() > 0 && stored(entries_.front()) &&
         (entries_.front().final || closed() > kMostUnsettled)) {
    if (!entries_.front().final) settled_ = std::max(settled_, entries_.front().span.end);
    dropFirst();
  }
  for (std::size_t i = 0; i < closed(); ++i) {
    if (stored(entries_[i]) && !entries_[i].bare) forgetTexts(entries_[i]);
  }
}

void SpanLog::dropFirst() {
  bytes_ -= weight(entries_.front());
  entries_.pop_front();
}

void SpanLog::release(std::optional<double> cut) {
  held_ = false;
  if (!cut || entries_.empty()) return;
  auto& rest = entries_.front();
  rest.id = -1;
  rest.span.start = *cut;
  const bool open = open_ && entries_.size() == 1;
  if (!open && rest.span.end <= *cut) dropFirst();
}

// Yields the row's id.
int64_t SpanLog::put(Transaction& change, const Entry& entry) const {
  const auto& span = entry.span;
  if (entry.gone) {
    change.run("DELETE FROM events WHERE id=?", {entry.id});
    return -1;
  }
  if (entry.id < 1) {
    const auto row = generation_ > 0 ? known(change, span) : std::nullopt;
    if (!row) return insert(change, entry);
    change.run("UPDATE events SET end=max(start, ?), title=?, url=? WHERE id=?",
               {span.end, span.title, span.url, *row});
    return *row;
  }
  if (!entry.titleStored) {
    change.run("UPDATE events SET title=?, url=? WHERE id=?", {span.title, span.url, entry.id});
  }
  if (entry.storedEnd == span.end) return entry.id;
  change.run("UPDATE events SET end=max(start, ?) WHERE id=?", {span.end, entry.id});
  if (change.changes() > 0 || span.end < entry.storedEnd) return entry.id;
  // Somebody has removed the row: what is recorded since is a span of its own.
  auto rest = entry;
  rest.span.start = entry.storedEnd;
  return insert(change, rest);
}

int64_t SpanLog::insert(Transaction& change, const Entry& entry) const {
  const auto& span = entry.span;
  return change.run(
      "INSERT INTO events(id,start,end,app,bundle,title,url,domain,idle,project_id) "
      "VALUES ((SELECT max(ifnull(max(id), 0), 0) + 1 FROM events),?,?,?,?,?,?,?,?,?)",
      {span.start, span.end, span.app, span.bundle, span.title, span.url, span.domain, span.idle,
       span.project});
}

// In a file that took the place of ours the span may already be there, as far as it had come.
std::optional<int64_t> SpanLog::known(Transaction& change, const SpanRecord& span) const {
  std::optional<int64_t> row;
  change.each("SELECT id FROM events WHERE start=? AND app=? AND domain IS ? AND idle=?",
              {span.start, span.app, span.domain, span.idle},
              [&](const Cursor& found) { row = found.int_(0); });
  return row;
}

}  // namespace orvanta
