#include "capture/span_log.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace orvanta {
namespace {

// A day of spans of ten seconds, each with a title and an address of some hundred bytes.
constexpr std::size_t kMostBytes = std::size_t{8} << 20;
constexpr std::size_t kMostAtOnce = 500;  // spans; some milliseconds

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

bool SpanLog::stored(const Entry& entry) const {
  return entry.id > 0 && entry.storedEnd == entry.span.end && entry.titleStored;
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
    for (auto& entry : entries_) entry.id = -1;
  }
  do {
    if (auto written = writeSome(patience); !written) return written;
    while (entries_.size() > (open_ ? 1U : 0U) && stored(entries_.front())) dropFirst();
    // One that began when there was no room has room now.
    if (open_ && entries_.size() == 1) entries_.back().kept = true;
  } while (waiting() > 0 && patience == Patience::Usual);
  return waiting() == 0 ? Written::stored() : Written::failed(SQLITE_BUSY);
}

Written SpanLog::writeSome(Patience patience) {
  if (waiting() == 0) return Written::stored();
  Transaction change(db_, patience);
  std::vector<std::pair<Entry*, int64_t>> rows;
  for (auto& entry : entries_) {
    if (rows.size() == kMostAtOnce) break;
    if (entry.kept && !stored(entry)) rows.emplace_back(&entry, put(change, entry));
  }
  auto written = change.commit();
  if (!written) return written;
  for (const auto& [entry, id] : rows) {
    entry->id = id;
    entry->storedEnd = entry->span.end;
    entry->titleStored = true;
  }
  return written;
}

void SpanLog::dropFirst() {
  bytes_ -= sizeOf(entries_.front().span);
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
  if (change.changes() > 0) return entry.id;
  // Somebody has removed the row: what is recorded since is a span of its own.
  auto rest = entry;
  rest.span.start = entry.storedEnd;
  return insert(change, rest);
}

int64_t SpanLog::insert(Transaction& change, const Entry& entry) const {
  const auto& span = entry.span;
  return change.run(
      "INSERT INTO events(start,end,app,bundle,title,url,domain,idle,project_id) "
      "VALUES (?,?,?,?,?,?,?,?,?)",
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
