#include <numeric>

#include "bridge/period_json.h"
#include "reports/analytics.h"
#include "reports/french_text.h"
#include "support/fake_desktop.h"
#include "support/naive_reports.h"
#include "support/random_places.h"
#include "support/times.h"

namespace orvanta::test {
namespace {

using Sums = std::map<std::string, double>;

Sums sumsOf(const std::vector<CategorySum>& list) {
  Sums sums;
  for (const auto& [key, seconds] : list) sums[key] = seconds;
  return sums;
}

// What the reports of the days from `first` to `last` say, added up.
struct NaivePeriod {
  double active = 0;
  double pauses = 0;
  std::size_t daysActive = 0;
  Extent extent;
  Sums byCategory, byProject, byClient, apps, domains;
  HeatMap heat{};

  NaivePeriod(Database& db, int first, int last) {
    for (int day = first; day <= last; ++day) addDay(db, day);
  }

  void addDay(Database& db, int day) {
    const auto projects = loadProjects(db);
    const auto spans = naiveSpans(db, naiveStart(day), naiveStart(day + 1));
    const auto lively = naiveActive(spans);
    if (naiveSeconds(lively) > 0) ++daysActive;
    active += naiveSeconds(lively);
    std::optional<double> from, to;
    for (const auto& span : lively) {
      from = std::min(from.value_or(span.start), span.start);
      to = std::max(to.value_or(span.end), span.end);
      byCategory[span.cat] += span.duration();
      apps[span.app] += span.duration();
      if (span.domain) domains[*span.domain] += span.duration();
      addHours(day, span);
      if (!span.pid || !projects.contains(*span.pid)) continue;
      byProject[std::to_string(*span.pid)] += span.duration();
      const auto& client = projects.at(*span.pid).client;
      if (!client.empty()) byClient[client] += span.duration();
    }
    if (!from) return;
    extent.first = std::min(extent.first.value_or(*from), *from);
    extent.last = std::max(extent.last.value_or(*to), *to);
    for (const auto& span : spans) {
      if (span.idle) pauses += std::max(0.0, std::min(span.end, *to) - std::max(span.start, *from));
    }
  }

  // By the wall clock, from one second to the next.
  void addHours(int day, const NaiveSpan& span) {
    for (double at = span.start; at < span.end;) {
      const auto second = static_cast<time_t>(std::floor(at));
      tm local{};
      localtime_r(&second, &local);
      const double end = std::min(span.end, static_cast<double>(second + 60 - second % 60));
      heat[static_cast<std::size_t>((day + 3) % 7)][static_cast<std::size_t>(local.tm_hour)] +=
          end - at;
      at = end;
    }
  }
};

// A span that ends at midnight or before it starts may have an entry, of no seconds.
Sums nonZero(Sums sums) {
  std::erase_if(sums, [](const auto& entry) { return entry.second == 0; });
  return sums;
}

void expectSums(const PeriodSums& sums, const NaivePeriod& naive) {
  EXPECT_EQ(sums.active, naive.active);
  EXPECT_EQ(nonZero(sumsOf(sums.byCategory)), nonZero(naive.byCategory));
  Sums projects, clients;
  double inProjects = 0;
  for (const auto& sum : sums.byProject) {
    projects[std::to_string(sum.id)] = sum.seconds;
    inProjects += sum.seconds;
  }
  for (const auto& sum : sums.byClient) clients[sum.client] = sum.seconds;
  EXPECT_EQ(nonZero(projects), nonZero(naive.byProject));
  EXPECT_EQ(nonZero(clients), nonZero(naive.byClient));
  EXPECT_EQ(sums.withoutProject, naive.active - inProjects);
}

Sums groupsOf(const NaivePeriod& naive, PeriodGroup group) {
  switch (group) {
    case PeriodGroup::Category:
      return naive.byCategory;
    case PeriodGroup::Project:
      return naive.byProject;
    case PeriodGroup::Client:
      return naive.byClient;
    case PeriodGroup::App:
      return naive.apps;
    default:
      return naive.domains;
  }
}

// Parts of a bucket that the report names; what is small or in no group is told together.
void expectParts(const PeriodReport& report, const std::vector<double>& parts,
                 const NaivePeriod& naive) {
  const auto expected = groupsOf(naive, report.group);
  double all = 0;
  for (std::size_t i = 0; i < report.groups.size(); ++i) {
    all += parts.at(i);
    const auto& key = report.groups[i].key;
    if (key.empty()) continue;
    const auto found = expected.find(key);
    EXPECT_EQ(parts[i], found == expected.end() ? 0 : found->second) << key;
  }
  EXPECT_EQ(all, naive.active) << "a bar is as high as its bucket";
}

struct PeriodTest : RandomPlaces {};

TEST_F(PeriodTest, IsTheSumOfItsDays) {
  forEachSeed(times(1200U), [&](Dice& dice, const Calendar& calendar, int day) {
    fillAtRandom(store.db, dice, naiveStart(day - 9) + dice.upTo(900000), 90000,
                 edges(day - 7, day + 7));
    store.db.run("UPDATE projects SET client = iif(id % 3 = 0, 'Rex', 'Ada') WHERE id % 3 < 2");
    const int first = day - dice.upTo(8);
    const int last = first + dice.upTo(12);
    const PeriodQuestion question{
        .range = {*Date::parse(naiveIso(first)), *Date::parse(naiveIso(last))},
        .by = static_cast<PeriodBy>(dice.upTo(2)),
        .group = static_cast<PeriodGroup>(dice.upTo(4))};
    clock.now = naiveStart(last + 5);
    const Analytics analytics(store.db, clock.read(), calendar);
    const auto report = analytics.period(question);
    const NaivePeriod naive(store.db, first, last);
    expectSums(report, naive);
    EXPECT_EQ(report.pauses, naive.pauses);
    EXPECT_EQ(report.daysActive, naive.daysActive);
    EXPECT_EQ(report.extent.first, naive.extent.first);
    EXPECT_EQ(report.extent.last, naive.extent.last);
    EXPECT_EQ(report.heat, naive.heat);
    Sums apps, domains;
    for (const auto& app : report.apps) apps[app.name] = app.seconds;
    for (const auto& domain : report.domains) domains[domain.name] = domain.seconds;
    EXPECT_EQ(apps, naive.apps);
    EXPECT_EQ(domains, naive.domains);
    int from = first;
    for (const auto& bucket : report.buckets) {
      const int to = from + bucket.dates.days() - 1;
      const NaivePeriod part(store.db, from, to);
      expectSums(bucket, part);
      EXPECT_EQ(bucket.pauses, part.pauses);
      expectParts(report, bucket.parts, part);
      from = to + 1;
    }
    EXPECT_EQ(from, last + 1);
    const auto before = question.range.from.daysUntil(report.before->dates.from);
    const NaivePeriod then(store.db, first + before,
                           first + before + report.before->dates.days() - 1);
    expectSums(*report.before, then);
    apps.clear();
    for (const auto& app : report.before->apps) apps[app.name] = app.seconds;
    EXPECT_EQ(nonZero(apps), nonZero(then.apps));
  });
}

TEST_F(PeriodTest, DaysTellOfAnythingWhenItWas) {
  forEachSeed(times(300U), [&](Dice& dice, const Calendar& calendar, int day) {
    fillAtRandom(store.db, dice, naiveStart(day - 3) + dice.upTo(200000), 3000,
                 edges(day - 3, day + 3));
    store.db.run("UPDATE projects SET client = 'Ada' WHERE id % 2");
    const DateRange range{*Date::parse(naiveIso(day - 3)), *Date::parse(naiveIso(day + 3))};
    const Analytics analytics(store.db, clock.read(), calendar);
    const auto total = [&](const ActivityFilter& filter) {
      return analytics.periodDays(range, filter).seconds;
    };
    const auto report = analytics.period({.range = range});
    EXPECT_EQ(total({}), report.active);
    EXPECT_EQ(total({.withoutProject = true}), report.withoutProject);
    for (const auto& sum : report.byCategory) {
      EXPECT_EQ(total({.category = sum.category}), sum.seconds);
    }
    for (const auto& sum : report.byProject) EXPECT_EQ(total({.project = sum.id}), sum.seconds);
    for (const auto& sum : report.byClient) EXPECT_EQ(total({.client = sum.client}), sum.seconds);
    for (const auto& sum : report.apps) EXPECT_EQ(total({.app = sum.name}), sum.seconds);
    for (const auto& sum : report.domains) EXPECT_EQ(total({.domain = sum.name}), sum.seconds);
    const int weekday = dice.upTo(6);
    const int hour = dice.upTo(23);
    EXPECT_EQ(total({.weekday = weekday, .hour = hour}), report.heat.at(weekday).at(hour));
    for (const auto& one : analytics.periodDays(range, {}).days) {
      EXPECT_EQ(one.seconds, analytics.totals(one.date).totals.active);
      EXPECT_TRUE(one.level >= 1 && one.level <= 4);
    }
  });
}

TEST_F(PeriodTest, TheTimesheetCountsTheSameHours) {
  forEachSeed(times(300U), [&](Dice& dice, const Calendar& calendar, int day) {
    fillAtRandom(store.db, dice, naiveStart(day - 3) + dice.upTo(200000), 3000,
                 edges(day - 3, day + 3));
    const auto projects = loadProjects(store.db);
    std::map<std::string, int64_t> expected;  // by project; "" for what waits for one
    for (int one = day - 3; one <= day + 3; ++one) {
      Sums seconds;
      for (const auto& span :
           naiveActive(naiveSpans(store.db, naiveStart(one), naiveStart(one + 1)))) {
        const bool known = span.pid && projects.contains(*span.pid);
        if (known) seconds[std::to_string(*span.pid)] += span.duration();
        const bool leisure = span.cat == "loisir" || span.cat == "autre";
        if (!known && !leisure) seconds[""] += span.duration();
      }
      for (const auto& [key, sum] : seconds) expected[key] += wholeSeconds(sum);
    }
    const Analytics analytics(store.db, clock.read(), calendar);
    const auto sheet = analytics.sheet(
        {.range = {*Date::parse(naiveIso(day - 3)), *Date::parse(naiveIso(day + 3))},
         .columns = static_cast<PeriodBy>(dice.upTo(2))});
    const auto expectRow = [&](const SheetRow& row, const std::string& key) {
      EXPECT_LE(std::abs(row.rawTotal - expected[key]), 30) << key << ", printed to the minute";
      EXPECT_EQ(std::accumulate(row.raw.begin(), row.raw.end(), int64_t{0}), row.rawTotal);
      expected.erase(key);
    };
    expectRow(*sheet.unassigned, "");
    for (const auto& row : sheet.rows) expectRow(row, std::to_string(row.project));
    for (const auto& [key, seconds] : expected) EXPECT_LE(seconds, 30) << key;
  });
}

TEST(DateRangeTest, PeriodsAreNamedAndFollowEachOther) {
  struct Case {
    const char *text, *from, *to, *kind, *before, *name;
  };
  for (const auto& [text, from, to, kind, before, name] : std::vector<Case>{
           {"2026", "2026-01-01", "2026-12-31", "year", "2025-01-01", "2026"},
           {"2024-02", "2024-02-01", "2024-02-29", "month", "2024-01-01", "février 2024"},
           {"2026-T1", "2026-01-01", "2026-03-31", "quarter", "2025-10-01", "1er trimestre 2026"},
           {"2026-T4", "2026-10-01", "2026-12-31", "quarter", "2026-07-01", "4e trimestre 2026"},
           {"2026-W43", "2026-10-19", "2026-10-25", "week", "2026-10-12",
            "semaine 43, du 19 au 25 octobre 2026"},
           {"2020-W53", "2020-12-28", "2021-01-03", "week", "2020-12-21",
            "semaine 53, du 28 décembre 2020 au 3 janvier 2021"},
           {"2026-11-01", "2026-11-01", "2026-11-01", "day", "2026-10-31",
            "dimanche 1er novembre 2026"},
           {"2026-09-30..2026-10-02", "2026-09-30", "2026-10-02", "other", "2026-09-27",
            "du 30 septembre au 2 octobre 2026"}}) {
    const auto range = parsePeriod(text);
    ASSERT_TRUE(range) << text;
    EXPECT_EQ(range->from.iso() + range->to.iso(), std::string(from) + to) << text;
    EXPECT_EQ(textOf(kindOf(*range)), kind) << text;
    const auto earlier = rangeBefore(*range);
    EXPECT_EQ(earlier.from.iso(), before) << text;
    EXPECT_EQ(earlier.to.plusDays(1), range->from) << text;
    EXPECT_EQ(nameOf(*range), name);
  }
  for (const auto* wrong :
       {"", "26", "2026-13", "2026-W54", "2025-W53", "2026-W0", "2026-T5", "2026-02-30",
        "2026-10-02..2026-10-01", "octobre", "2026-10..2026-11"}) {
    EXPECT_FALSE(parsePeriod(wrong)) << wrong;
  }
}

TEST(DateRangeTest, ARunningPeriodIsComparedUpToTheSamePoint) {
  const Calendar calendar(Glib::TimeZone::create("Europe/Paris"));
  const auto at = [&](const char* date, double hour) {
    return calendar.startOf(*Date::parse(date)) + hour * 3600;
  };
  const auto before = [&](const char* period, double now) {
    return samePointBefore(calendar, *parsePeriod(period), now);
  };
  EXPECT_EQ(before("2026-W47", at("2026-11-19", 10.5)), at("2026-11-12", 10.5));
  EXPECT_EQ(before("2026-11", at("2026-11-19", 10.5)), at("2026-10-19", 10.5));
  EXPECT_EQ(before("2026-T4", at("2026-11-30", 9)), at("2026-08-30", 9));
  EXPECT_EQ(before("2026-03", at("2026-03-30", 9)), at("2026-03-01", 0)) << "no 30 February";
  EXPECT_EQ(before("2024", at("2024-02-29", 9)), at("2023-03-01", 0));
  EXPECT_EQ(before("2026-02", at("2026-02-28", 23)), at("2026-01-28", 23));
  // The clock was put forward in the night to Sunday the 29th of March, back on 25 October.
  EXPECT_EQ(before("2026-W14", at("2026-04-05", 12)), at("2026-03-29", 11));
  EXPECT_EQ(before("2026-W44", at("2026-11-01", 12)), at("2026-10-25", 13));
}

}  // namespace
}  // namespace orvanta::test
