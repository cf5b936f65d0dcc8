#include "reports/activity_search.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include "classify/book_difference.h"
#include "classify/classifier.h"
#include "reports/search_sums.h"
#include "storage/activity_index.h"
#include "storage/snapshot.h"

namespace orvanta {
namespace {

constexpr double kForever = std::numeric_limits<double>::infinity();

// What of the store's days is not known, the newest first.
std::vector<TimeRange> rangesBeside(const std::vector<int64_t>& days) {
  std::vector<TimeRange> ranges;
  double from = -kForever;
  for (const auto day : days) {
    if (from < startOfDay(day)) ranges.push_back({from, startOfDay(day)});
    from = startOfDay(day + 1);
  }
  ranges.push_back({from, kForever});
  std::reverse(ranges.begin(), ranges.end());
  return ranges;
}

}  // namespace

// One question.
class ActivitySearch::Searching {
 public:
  Searching(const ActivitySearch& search, const std::string& text)
      : db_(search.db_),
        snapshot_(search.db_),
        book_(search.rules_.book()),
        stamps_(readStamps([&](auto sql, const auto& visit) {
                  return db_.scan(sql, {}, visit);
                }).value_or(StampedDays())),
        known_(search.known(book_, stamps_)),
        reader_(texts_),
        classifier_(texts_, book_),
        words_(searchWords(text), book_->projects()),
        sums_(search.calendar_) {}

  bool hasWords() const { return !words_.words().empty(); }

  // Every day that has some, in their order. Without `wait` of what is not known the newest only.
  std::vector<int64_t> days(bool wait) {
    auto found = knownDays();
    const auto others = otherDays(wait);
    found.insert(found.end(), others.begin(), others.end());
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
  }

  // Those of the spans that start in a range, by their start.
  void each(const TimeRange& range, const std::function<void(const Ev&)>& visit) {
    scan("WHERE start >= ? AND start < ? ORDER BY start, id", {range.start, range.end}, visit);
  }

  SearchSums& sums() { return sums_; }
  const Projects& projects() const { return book_->projects(); }
  bool building() const { return building_; }
  bool whole() const { return whole_; }

 private:
  std::vector<int64_t> knownDays() {
    const auto masks = known_.wordsIn(words_.words(), projects());
    std::vector<double> seconds(masks.size());
    std::vector<int64_t> found;
    for (std::size_t i = 0; i < known_.days().size(); ++i) {
      const auto& day = known_.days()[i];
      if (!std::binary_search(stamps_.begin(), stamps_.end(), day)) continue;
      current_.push_back(day.day);
      bool any = false;
      for (const auto& record : known_.records(i)) {
        if (masks[record.activity] != words_.all()) continue;
        any = true;
        seconds[record.activity] += record.seconds;
        sums_.add(record.first, record.seconds);
      }
      if (any) found.push_back(day.day);
    }
    for (std::size_t i = 0; i < seconds.size(); ++i) {
      if (seconds[i] <= 0) continue;
      const auto& one = known_.activity(i);
      const auto ours = [&](Text text) { return text ? texts_.intern(text.view()) : Text(); };
      addSubjects(ours(known_.text(one.app)), ours(known_.text(one.domain)), known_.project(one),
                  seconds[i]);
    }
    return found;
  }

  std::vector<int64_t> otherDays(bool wait) {
    constexpr int64_t kAtOnce = 20'000;  // spans, in some hundredths of a second
    constexpr double kFirst = -62135596800;
    constexpr double kLast = 253402300800;
    int64_t left = wait ? std::numeric_limits<int64_t>::max() : kAtOnce;
    std::vector<int64_t> found;
    for (const auto& range : rangesBeside(current_)) {
      scan("WHERE start >= ? AND start < ? ORDER BY start DESC LIMIT ?",
           {range.start, range.end, left}, [&](const Ev& ev) {
             sums_.add(ev.start, ev.duration());
             addSubjects(ev.app, ev.domain, ev.pid, ev.duration());
             if (ev.start >= kFirst && ev.start < kLast) {
               found.push_back(floorDivide(static_cast<int64_t>(std::floor(ev.start)),
                                           static_cast<int64_t>(kSecondsOfDay)));
             }
           });
      left -= rows_;
      building_ = left <= 0;
      if (building_) break;
    }
    return found;
  }

  void scan(const char* condition, const Args& args, const std::function<void(const Ev&)>& visit) {
    static const std::string kSpans =
        "SELECT id, start, end, app, title, url, domain, idle, category, project_id FROM events ";
    rows_ = 0;
    whole_ = db_.scan(kSpans + condition, args, [&](const Cursor& row) {
      ++rows_;
      auto ev = reader_.read(row);
      if (ev.idle) return;
      classifier_.classify(ev);
      if (words_.in(ev) == words_.all()) visit(ev);
    }) && whole_;
  }

  void addSubjects(Text app, Text domain, const std::optional<int64_t>& project, double seconds) {
    using Kind = Found::Subject::Kind;
    if (words_.in(app) == words_.all()) sums_.add({Kind::App, app.str(), {}}, seconds);
    if (words_.in(domain) == words_.all()) sums_.add({Kind::Domain, domain.str(), {}}, seconds);
    const auto found = project ? projects().find(*project) : projects().end();
    if (found == projects().end() || words_.in(project) != words_.all()) return;
    sums_.add({Kind::Project, found->second.name, project}, seconds);
  }

  Database& db_;
  const Snapshot snapshot_;
  const std::shared_ptr<const RuleBook> book_;
  const StampedDays stamps_;
  const KnownActivities& known_;
  StringPool texts_;
  EvReader reader_;
  Classifier classifier_;
  SearchedWords words_;
  SearchSums sums_;
  std::vector<int64_t> current_;  // days that are known, and hold true
  int64_t rows_ = 0;              // of the last scan
  bool building_ = false;
  bool whole_ = true;
};

ActivitySearch::ActivitySearch(Database& db, const CurrentRules& rules, const Calendar& calendar)
    : db_(db), rules_(rules), calendar_(calendar) {}

const KnownActivities& ActivitySearch::known(const std::shared_ptr<const RuleBook>& book,
                                             const StampedDays& stamps) const {
  // A few days are read each time; of more the index has told since.
  constexpr std::ptrdiff_t kMostUnknown = kChunkDays;
  const auto unknown = [&] {
    StampedDays days;
    std::set_difference(stamps.begin(), stamps.end(), known_->days().begin(), known_->days().end(),
                        std::back_inserter(days));
    return static_cast<std::ptrdiff_t>(days.size());
  };
  const bool holds = known_ && BookDifference(known_->book(), *book).none();
  if (!holds || unknown() >= kMostUnknown) {
    known_.reset();
    known_ = std::make_unique<const KnownActivities>(db_, book, stamps);
  }
  return *known_;
}

Found ActivitySearch::find(const SearchQuestion& question) const {
  const std::lock_guard lock(mutex_);
  Searching searching(*this, question.text);
  Found found;
  if (searching.hasWords()) {
    const auto days = searching.days(question.wait);
    found = searching.sums().found();
    DayLister lister(calendar_, searching.projects(), question.before, question.days);
    lister.list(days,
                [&](const TimeRange& range, const auto& visit) { searching.each(range, visit); });
    lister.addTo(found);
  }
  found.building = searching.building();
  found.whole = searching.whole();
  used_ = std::chrono::steady_clock::now();
  return found;
}

bool ActivitySearch::each(const std::string& text,
                          const std::function<void(const Ev&)>& visit) const {
  const std::lock_guard lock(mutex_);
  Searching searching(*this, text);
  if (!searching.hasWords()) return true;
  const auto days = searching.days(true);
  for (auto begin = days.begin(); begin != days.end();) {
    auto end = begin + 1;
    while (end != days.end() && *end == *(end - 1) + 1) ++end;
    searching.each({startOfDay(*begin), startOfDay(*(end - 1) + 1)}, visit);
    begin = end;
  }
  used_ = std::chrono::steady_clock::now();
  return searching.whole();
}

void ActivitySearch::releaseUnused() const {
  constexpr std::chrono::minutes kAWhile{1};
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (lock && std::chrono::steady_clock::now() - used_ > kAWhile) known_.reset();
}

}  // namespace orvanta
