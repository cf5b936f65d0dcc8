#include "reports/goals.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cmath>
#include <utility>

#include "base/site.h"
#include "reports/local_days.h"
#include "reports/spans.h"
#include "reports/tally.h"

namespace orvanta {
namespace {

constexpr int kNear = 80;  // percent
constexpr int kReached = 100;

// Texts are looked at once each: a day has hundreds of spans and a dozen of sites.
class Matcher {
 public:
  explicit Matcher(const Goal& goal) : goal_(goal), site_(siteOf(goal.name)) {}

  bool counts(const Ev& ev) {
    switch (goal_.subject) {
      case GoalSubject::Project:
        return ev.pid && ev.pid == goal_.project;
      case GoalSubject::Category:
        return known(ev.cat);
      case GoalSubject::App:
        return known(ev.app);
      case GoalSubject::Site:
        break;
    }
    return ev.domain && known(ev.domain);
  }

 private:
  bool known(Text text) {
    const auto [at, isNew] = known_.try_emplace(text, false);
    if (isNew) at->second = means(text.view());
    return at->second;
  }

  // A site stands for all that lies under it, however it is written.
  bool means(std::string_view text) const {
    return goal_.subject == GoalSubject::Site ? liesUnder(siteOf(text), site_) : text == goal_.name;
  }

  const Goal& goal_;
  std::string site_;
  boost::unordered_flat_map<Text, bool, TextHash> known_;
};

// Seconds of each day by goal, and of any activity last.
using DaySums = std::vector<std::vector<double>>;

DaySums sumsOf(SpanReader& reader, const Calendar& calendar, const std::vector<Goal>& goals,
               const DateRange& range) {
  LocalDays days(calendar, range);
  std::vector<Matcher> matchers(goals.begin(), goals.end());
  DaySums sums(goals.size() + 1, std::vector<double>(days.size()));
  std::vector<std::size_t> counted;
  reader.each(days.range(), [&](const Ev& ev) {
    if (ev.idle) return;
    counted = {goals.size()};
    for (std::size_t i = 0; i < matchers.size(); ++i) {
      if (matchers[i].counts(ev)) counted.push_back(i);
    }
    days.split(ev, [&](std::size_t day, const Ev& part) {
      for (const auto i : counted) sums[i][day] += part.duration();
    });
  });
  return sums;
}

GoalFacts factsOf(const Goal& goal, const Projects& projects) {
  GoalFacts facts{.goal = goal};
  if (goal.subject != GoalSubject::Project) return facts;
  const auto found = projects.find(goal.project.value_or(0));
  facts.missing = found == projects.end();
  if (facts.missing) return facts;
  facts.project = found->second.name;
  facts.color = found->second.color;
  return facts;
}

bool anyWeekly(const std::vector<Goal>& goals) {
  return std::any_of(goals.begin(), goals.end(),
                     [](const Goal& goal) { return goal.period == GoalPeriod::Week; });
}

// Sums of a range of days, which `first` is the first of.
double sumOf(const std::vector<double>& days, const Date& first, const DateRange& range) {
  const int from = std::max(0, first.daysUntil(range.from));
  const int to = std::min(static_cast<int>(days.size()), first.daysUntil(range.to) + 1);
  double seconds = 0;
  for (int day = from; day < to; ++day) seconds += days[static_cast<std::size_t>(day)];
  return seconds;
}

GoalOutcome outcomeOf(const Goal& goal, const GoalHistory::Piece& piece, double active,
                      const Date& made, const Date& today) {
  const bool running = piece.dates.holds(today);
  const auto wanted = static_cast<double>(goal.seconds);
  if (piece.dates.to < made) return GoalOutcome::Before;
  if (goal.bound == GoalBound::Most && piece.seconds > wanted) return GoalOutcome::Missed;
  if (goal.bound == GoalBound::Least && piece.seconds >= wanted) return GoalOutcome::Kept;
  if (running) return GoalOutcome::Running;
  if (active <= 0) return GoalOutcome::Off;
  return goal.bound == GoalBound::Most ? GoalOutcome::Kept : GoalOutcome::Missed;
}

void count(GoalHistory& history) {
  for (const auto& piece : history.pieces) {
    if (piece.outcome == GoalOutcome::Kept) {
      ++history.kept;
      ++history.streak;
    }
    if (piece.outcome == GoalOutcome::Missed) history.streak = 0;
    if (piece.outcome == GoalOutcome::Kept || piece.outcome == GoalOutcome::Missed)
      ++history.counted;
  }
}

}  // namespace

int GoalState::percent() const {
  constexpr double kMost = 1000;
  const double percent = done() * kReached / static_cast<double>(goal.seconds);
  return static_cast<int>(std::clamp(std::floor(percent), 0.0, kMost));
}

int levelOf(const GoalState& state) {
  if (state.missing) return 0;
  const int percent = state.percent();
  if (percent >= kReached) return kReached;
  return percent >= kNear ? kNear : 0;
}

std::vector<GoalState> goalStates(SpanReader& reader, const Calendar& calendar, double now,
                                  const std::vector<Goal>& goals, bool week) {
  if (goals.empty()) return {};
  const auto today = calendar.dateOf(now);
  const auto thisWeek = weekOf(today);
  const DateRange read{week || anyWeekly(goals) ? thisWeek.from : today, today};
  const auto sums = sumsOf(reader, calendar, goals, read);
  std::vector<GoalState> states;
  for (std::size_t i = 0; i < goals.size(); ++i) {
    auto& state = states.emplace_back(GoalState{factsOf(goals[i], reader.projects()), {}});
    state.dates = state.weekly() ? thisWeek : DateRange{today, today};
    state.today = sums[i].back();
    if (read.from != today || week) state.week = sumOf(sums[i], read.from, thisWeek);
  }
  // On a Monday the week is the day.
  if (read.from == today && today == thisWeek.from) {
    for (auto& state : states) state.week = state.today;
  }
  return states;
}

std::vector<GoalHistory> goalHistory(SpanReader& reader, const Calendar& calendar, double now,
                                     const std::vector<Goal>& goals, const DateRange& range) {
  const auto today = calendar.dateOf(now);
  std::vector<GoalHistory> list;
  for (const auto& goal : goals) list.push_back({factsOf(goal, reader.projects()), {}});
  if (goals.empty() || range.from > today) return list;
  DateRange read{range.from, std::min(range.to, today)};
  if (anyWeekly(goals)) read.from = weekOf(read.from).from;
  if (anyWeekly(goals)) read.to = std::min(weekOf(read.to).to, today);
  const auto sums = sumsOf(reader, calendar, goals, read);
  for (std::size_t i = 0; i < goals.size(); ++i) {
    auto& history = list[i];
    const bool weekly = goals[i].period == GoalPeriod::Week;
    const auto made = calendar.dateOf(goals[i].created);
    const auto last = std::min(range.to, today);
    for (auto from = weekly ? read.from : range.from; from <= last;) {
      const auto dates = weekly ? weekOf(from) : DateRange{from, from};
      GoalHistory::Piece piece{dates, sumOf(sums[i], read.from, dates)};
      const double active = sumOf(sums.back(), read.from, dates);
      piece.outcome = outcomeOf(goals[i], piece, active, made, today);
      history.pieces.push_back(piece);
      from = dates.to.plusDays(1);
    }
    count(history);
  }
  return list;
}

}  // namespace orvanta
