#include "reports/effect.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <limits>
#include <set>
#include <span>
#include <utility>

#include "classify/book_difference.h"
#include "classify/current_rules.h"
#include "classify/rule_set.h"
#include "reports/effect_sums.h"
#include "storage/snapshot.h"
#include "storage/touched_spans.h"

namespace orvanta {
namespace {

constexpr auto kSpans =
    "SELECT id, start, end, app, title, url, domain, idle, category, project_id FROM events ";
constexpr int kMonthsPerYear = 12;

using What = EffectSums::What;
using Visit = std::function<void(const Cursor&)>;

// One change of the book, while the activities are gone through.
struct Comparison {
  Comparison(StringPool& texts, const BookChange& change)
      : books(change),
        difference(*change.before, *change.after),
        before(texts, change.before),
        after(texts, change.after) {}

  // Absent where nothing is to be known of its time.
  std::optional<uint32_t> sort(const Ev& ev) {
    if (!difference.concerns(ev)) return {};
    const Counted from(before.decide(ev));
    const auto place = sums.placeOf(from, Counted(after.decide(ev)), ev);
    if (!place && !from.project) return {};
    sorted.push_back({place, from.project});
    return static_cast<uint32_t>(sorted.size() - 1);
  }
  void add(uint32_t number, const ActivityTime& time) {
    auto& activity = sorted[number];
    activity.lasts = activity.lasts || time.seconds > 0;
    if (activity.place) sums.add(*activity.place, time, What::Activity);
  }

  struct Sorted {
    std::optional<EffectSums::Place> place;
    std::optional<int64_t> project;  // before
    bool lasts = false;
  };

  const BookChange books;
  const BookDifference difference;
  Classifier before;
  Classifier after;
  EffectSums sums;
  std::vector<Sorted> sorted;
};

// False when not every activity could be read.
bool compare(Database& db, StringPool& texts, const Calendar& calendar,
             std::span<Comparison> comparisons) {
  struct Known {
    Comparison* comparison;
    uint32_t number;
  };
  std::vector<Known> known;          // one activity after the other
  std::vector<std::size_t> ends{0};  // by number of the activity, from 1 on
  return Activities(db, texts, calendar)
      .each(
          [&](const Ev& ev) {
            for (auto& one : comparisons) {
              if (const auto number = one.sort(ev)) known.push_back({&one, *number});
            }
            if (known.size() == ends.back()) return Activities::kUnwanted;
            ends.push_back(known.size());
            return static_cast<uint32_t>(ends.size() - 1);
          },
          [&](uint32_t number, const ActivityTime& time) {
            for (auto i = ends[number - 1]; i < ends[number]; ++i) {
              known[i].comparison->add(known[i].number, time);
            }
          });
}

Effect told(Database& db, const Comparison& comparison, bool whole) {
  const auto titleOf = [&](int64_t span) {
    std::optional<std::string> title;
    db.scan("SELECT title FROM events WHERE id=?", {span},
            [&](const Cursor& row) { title = row.str(0); });
    return title;
  };
  auto effect = comparison.sums.effect(comparison.books.before->projects(),
                                       comparison.books.after->projects(), titleOf);
  effect.whole = whole;
  return effect;
}

// Shows the rows of these spans to `visit`, by a reader of rows, some at a time.
template <class Read>
void eachOf(std::span<const int64_t> ids, const Read& read, const Visit& visit) {
  constexpr std::size_t kAtOnce = 10000;
  static const auto kSelect = std::string(kSpans) + "WHERE id IN (SELECT value FROM json_each(?))";
  for (; !ids.empty(); ids = ids.subspan(std::min(ids.size(), kAtOnce))) {
    const auto some = ids.first(std::min(ids.size(), kAtOnce));
    read(kSelect, {fmt::format("[{}]", fmt::join(some, ","))}, visit);
  }
}

}  // namespace

std::vector<BookEffect> effectsOf(Database& db, const Calendar& calendar,
                                  const std::vector<BookChange>& changes) {
  const Snapshot snapshot(db);
  StringPool texts;
  std::vector<Comparison> comparisons;
  comparisons.reserve(changes.size());
  for (const auto& change : changes) comparisons.emplace_back(texts, change);
  const bool whole = compare(db, texts, calendar, comparisons);
  std::vector<BookEffect> effects;
  for (const auto& one : comparisons) {
    std::set<int64_t> projects;
    for (const auto& activity : one.sorted) {
      if (activity.project && activity.lasts) projects.insert(*activity.project);
    }
    effects.push_back({told(db, one, whole), {projects.begin(), projects.end()}});
  }
  return effects;
}

class ChangeEffect::Measuring {
 public:
  Measuring(Transaction& change, const std::string& changeset, const Calendar& calendar)
      : db_(change.database()),
        calendar_(calendar.pinned()),
        months_(calendar),
        touched_(touchedSpans(changeset)),
        reader_(texts_),
        comparison_(texts_, booksOf(change, touched_)) {
    const auto read = [&](const std::string& sql, const Args& args, const Visit& visit) {
      change.each(sql, args, visit);
    };
    for (const auto id : touched_.known) after_.emplace(id, std::nullopt);
    eachOf(touched_.known, read, [&](const Cursor& row) {
      const auto ev = reader_.read(row);
      after_[ev.id] = Piece{ev.start, ev.end, Counted(comparison_.after.decide(ev))};
    });
    eachOf(touched_.added, read,
           [&](const Cursor& row) { added_.push_back(reader_.kept(reader_.read(row))); });
  }

  Effect effect() {
    const bool sorting = !comparison_.difference.none() && !touchesAll();
    if (sorting) whole_ = compare(db_, texts_, calendar_, {&comparison_, 1});
    const auto read = [&](const std::string& sql, const Args& args, const Visit& visit) {
      whole_ = db_.scan(sql, args, visit) && whole_;
    };
    eachOf(touched_.known, read, [&](const Cursor& row) {
      const auto ev = reader_.read(row);
      if (sorting) takeFromActivity(ev);
      addTouched(ev);
    });
    // What is added is cut off from another span, of which it is a copy.
    for (const auto& ev : added_) {
      addPart(ev, Counted(comparison_.before.decide(ev)), Counted(comparison_.after.decide(ev)),
              ev.start, ev.duration());
    }
    if (sorting) findFirst();
    return told(db_, comparison_, whole_);
  }

 private:
  // What has become of a span.
  struct Piece {
    double start = 0;
    double end = 0;
    Counted counted;
  };

  // The rules and projects of the scans are those of before.
  static BookChange booksOf(Transaction& change, const TouchedSpans& touched) {
    auto before = CurrentRules(change.database()).book();
    if (!touched.sorting) return {before, before};
    return {before, std::make_shared<const RuleBook>(loadRules(change), loadProjects(change))};
  }

  // Of a part of a span, or of all of it.
  void addPart(const Ev& ev, const Counted& from, const Counted& to, double start, double seconds,
               What what = What::Apart) {
    const auto place = comparison_.sums.placeOf(from, to, ev);
    if (!place) return;
    comparison_.sums.add(*place,
                         {.month = months_.of(start),
                          .seconds = seconds,
                          .spans = 1,
                          .first = start,
                          .example = ev.id},
                         what);
  }

  // Whether the books see no span differently but those that are touched: as when a project without
  // keywords goes.
  bool touchesAll() {
    const auto& difference = comparison_.difference;
    if (!difference.inProjectsOnly()) return false;
    constexpr auto kOfProject = "SELECT id FROM events WHERE project_id=?";
    return std::all_of(difference.projects().begin(), difference.projects().end(), [&](auto id) {
      bool all = true;
      const bool read = db_.scan(kOfProject, {id}, [&](const Cursor& row) {
        all = all && after_.contains(row.int_(0).value_or(0));
      });
      return all && read;
    });
  }

  // As one of its activity a touched span was added already, unless it is an absence.
  void takeFromActivity(const Ev& ev) {
    addPart(ev, Counted(comparison_.before.decide(ev)), Counted(comparison_.after.decide(ev)),
            ev.start, ev.duration(), What::Taken);
  }

  void addTouched(const Ev& ev) {
    const Counted from(comparison_.before.decide(ev));
    const auto& own = after_[ev.id];
    if (own) {
      addPart(ev, from, own->counted, own->start, std::max(own->end - own->start, 0.0));
    } else {
      addPart(ev, from, {}, ev.start, ev.duration());
    }
  }

  // Of the first month in which something changed and touched spans were taken away, the others are
  // looked at one by one.
  void findFirst() {
    const auto month = comparison_.sums.unsureMonth();
    if (!month) return;
    const auto startOf = [&](int number) {
      return calendar_.startOf({number / kMonthsPerYear, number % kMonthsPerYear + 1, 1});
    };
    constexpr auto kMonth = "WHERE start >= ? AND start < ? ORDER BY start";
    double first = std::numeric_limits<double>::infinity();
    whole_ = db_.scan(std::string(kSpans) + kMonth, {startOf(*month), startOf(*month + 1)},
                      [&](const Cursor& row) {
                        if (first <= row.dbl(1)) return;
                        const auto ev = reader_.read(row);
                        if (after_.contains(ev.id)) return;
                        const Counted from(comparison_.before.decide(ev));
                        if (!(from == Counted(comparison_.after.decide(ev)))) first = ev.start;
                      }) &&
             whole_;
    comparison_.sums.setFirst(*month, first);
  }

  Database& db_;
  const Calendar calendar_;
  Months months_;
  const TouchedSpans touched_;
  StringPool texts_;
  EvReader reader_;
  Comparison comparison_;
  // By span; absent for one that is gone.
  boost::unordered_flat_map<int64_t, std::optional<Piece>> after_;
  std::vector<Ev> added_;
  bool whole_ = true;
};

ChangeEffect::ChangeEffect(Transaction& change, const std::string& changeset,
                           const Calendar& calendar)
    : measuring_(std::make_unique<Measuring>(change, changeset, calendar)) {}

ChangeEffect::~ChangeEffect() = default;

Effect ChangeEffect::effect() {
  return measuring_->effect();
}

}  // namespace orvanta
