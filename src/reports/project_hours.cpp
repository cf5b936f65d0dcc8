#include <algorithm>
#include <cmath>
#include <map>

#include "reports/sheet.h"
#include "reports/spans.h"

namespace orvanta {
namespace {

constexpr int kWeeks = 4;
constexpr int kDaysPerWeek = 7;

struct Sums {
  TimeRange range;
  double seconds = 0;

  void add(const Ev& ev) {
    if (overlaps(ev, range)) seconds += clipped(ev, range).duration();
  }
};

struct Counted {
  Sums thisMonth, lastMonth, weeks, budget;
};

// At most a century ahead: what takes longer never ends.
std::optional<Date> runsOut(const Date& today, double left, double perWeek) {
  constexpr double kMostWeeks = 5200;
  if (left <= 0 || perWeek <= 0 || left / perWeek > kMostWeeks) return {};
  return today.plusDays(static_cast<int>(std::ceil(left / perWeek * kDaysPerWeek)));
}

double budgetStart(const Calendar& calendar, const ProjectTerms& terms) {
  const auto from = terms.budgetFrom ? Date::parse(*terms.budgetFrom) : std::nullopt;
  return from ? calendar.startOf(*from) : 0;
}

}  // namespace

std::vector<ProjectHours> projectHours(SpanReader& reader, const Calendar& calendar, double now,
                                       const TermsByProject& terms) {
  const auto today = calendar.dateOf(now);
  const auto month = monthOf(today);
  const TimeRange weeks{calendar.startOf(today.plusDays(-kWeeks * kDaysPerWeek)), now};
  std::map<int64_t, Counted> counted;
  const auto last = rangeBefore(month).bounds(calendar);
  double from = std::min(last.start, weeks.start);
  for (const auto& [id, project] : reader.projects()) {
    auto& own = counted[id];
    own.thisMonth.range = {last.end, now};
    own.lastMonth.range = last;
    own.weeks.range = weeks;
    const auto agreed = terms.find(id);
    if (agreed == terms.end() || !agreed->second.budget) continue;
    own.budget.range = {budgetStart(calendar, agreed->second), now};
    from = std::min(from, own.budget.range.start);
  }
  reader.each({from, now}, [&](const Ev& ev) {
    const auto own = ev.idle || !ev.pid ? counted.end() : counted.find(*ev.pid);
    if (own == counted.end()) return;
    auto& [thisMonth, lastMonth, lastWeeks, budget] = own->second;
    for (auto* sums : {&thisMonth, &lastMonth, &lastWeeks, &budget}) sums->add(ev);
  });
  std::vector<ProjectHours> list;
  for (const auto& [id, own] : counted) {
    ProjectHours hours{.project = id,
                       .thisMonth = own.thisMonth.seconds,
                       .lastMonth = own.lastMonth.seconds,
                       .used = own.budget.seconds,
                       .perWeek = own.weeks.seconds / kWeeks};
    const auto agreed = terms.find(id);
    if (agreed != terms.end() && agreed->second.budget) {
      hours.left = static_cast<double>(*agreed->second.budget) - hours.used;
      hours.runsOut = runsOut(today, *hours.left, hours.perWeek);
    }
    list.push_back(hours);
  }
  return list;
}

}  // namespace orvanta
