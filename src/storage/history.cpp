#include "storage/history.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "storage/changeset.h"

namespace orvanta {
namespace {

constexpr std::size_t kAlways = 50;  // changes that are remembered, however large
constexpr std::size_t kMost = 500;
constexpr std::size_t kMostBytes = std::size_t{16} << 20;

}  // namespace

Written History::record(const std::function<ChangeNote(Transaction&)>& work) {
  const std::lock_guard lock(mutex_);
  std::string changeset;
  ChangeNote note;
  auto written = [&] {
    Transaction change(db_);
    {
      ChangeRecorder recorder(change);
      if (change) note = work(change);
      changeset = recorder.changeset();
    }
    return change.commit();
  }();
  if (written && !changeset.empty()) keep(std::move(note), std::move(changeset));
  return written;
}

void History::keep(ChangeNote note, std::string changeset) {
  // No list of changes can tell of a span that never ends.
  if (!std::isfinite(note.seconds)) note.seconds = 0;
  bytes_ += changeset.size();
  entries_.push_back(
      {{.id = ++lastId_, .at = clock_(), .note = std::move(note)}, std::move(changeset)});
  while (entries_.size() > kMost || (entries_.size() > kAlways && bytes_ > kMostBytes)) {
    bytes_ -= entries_.front().changeset.size();
    entries_.pop_front();
  }
}

std::vector<Change> History::list(std::size_t most) const {
  const std::lock_guard lock(mutex_);
  std::vector<Change> changes;
  for (auto entry = entries_.rbegin(); entry != entries_.rend() && changes.size() < most; ++entry) {
    changes.push_back(entry->change);
  }
  return changes;
}

History::Outcome History::turn(int64_t id, bool back) {
  const std::lock_guard lock(mutex_);
  const auto entry = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& known) { return known.change.id == id; });
  if (entry == entries_.end() || entry->change.undone == back) return Outcome::Unknown;
  Transaction change(db_);
  switch (apply(change, entry->changeset, back)) {
    case Applied::All:
      break;
    case Applied::Conflict:
      return Outcome::Depends;
    case Applied::Failed:
      return Outcome::NotStored;
  }
  if (!change.commit()) return Outcome::NotStored;
  entry->change.undone = back;
  return Outcome::Done;
}

void History::forgetUndone() {
  const std::lock_guard lock(mutex_);
  std::erase_if(entries_, [&](const Entry& entry) {
    if (entry.change.undone) bytes_ -= entry.changeset.size();
    return entry.change.undone;
  });
}

void History::forgetAll() {
  const std::lock_guard lock(mutex_);
  entries_.clear();
  bytes_ = 0;
}

}  // namespace orvanta
