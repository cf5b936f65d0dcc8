#include "store_maker/person.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace orvanta {
namespace {

constexpr double kMinute = 60;
constexpr double kHour = 3600;
constexpr int kDayElsewhere = 8;
constexpr int kOddDay = 30;
constexpr int kCorrectedBefore = 3;
constexpr int kStudies = 4;  // the project

}  // namespace

void Person::live(SpanWriter& spans, const Date& date, int ago) {
  spans_ = &spans;
  ago_ = ago;
  if (ago == kDayElsewhere) return;
  const double midnight = calendar_.startOf(date);
  const Date monday = date.monday();
  if (date == monday.plusDays(5) || date == monday.plusDays(6)) {
    weekend(midnight, date == monday.plusDays(6));
  } else {
    workday(midnight);
  }
}

void Person::workday(double midnight) {
  const auto at = [&](double hour) { return midnight + std::round(hour * 60) * kMinute; };
  const double lunch =
      session(at(8.6 + chance() * 0.6), at(12.2 + chance() * 0.4), workActivities(), 0.09);
  const double back = at(13.3 + chance() * 0.5);
  away(lunch, back - lunch);
  away(session(back, at(17.6 + chance() * 1.3), workActivities(), 0.12), 10 * kMinute);
  if (chance() >= 0.55) return;
  const double evening = 20.4 + chance() * 0.4;
  away(session(at(evening), at(21.4 + chance() * 1.4), eveningActivities(), 0.15), 10 * kMinute);
}

void Person::weekend(double midnight, bool sunday) {
  if (sunday && chance() < 0.5) return;
  const auto at = [&](double hour) { return midnight + std::round(hour * 60) * kMinute; };
  const double morning = 10.5 + chance();
  away(session(at(morning), at(11.4 + chance()), eveningActivities(), 0.4), 10 * kMinute);
  away(session(at(20.5), at(21 + chance() * 1.5), eveningActivities(), 0.2), 10 * kMinute);
}

double Person::session(double from, double to, const std::vector<Activity>& mostly,
                       double straying) {
  double at = from;
  while (at < to) {
    const auto& activity = pick(chance() < straying ? pauseActivities() : mostly);
    const double length =
        activity.shortest + (activity.longest - activity.shortest) * std::pow(chance(), 2.2);
    const double end = std::min(at + length, to);
    auto span = spanOf(activity, at, end);
    correct(span);
    spans_->add(span);
    at = end;
    if (chance() >= 0.045) continue;
    const double pause = 200 + chance() * 900;
    away(at, pause);
    at += pause;
  }
  return at;
}

// The computer notices that nobody is there before it goes to sleep.
void Person::away(double from, double seconds) {
  spans_->add({.start = from, .end = from + seconds, .app = "Inactif", .idle = true});
}

const Activity& Person::pick(const std::vector<Activity>& from) {
  const int total = std::accumulate(from.begin(), from.end(), 0,
                                    [](int sum, const Activity& one) { return sum + one.weight; });
  double left = chance() * total;
  const auto found = std::find_if(from.begin(), from.end(), [&](const Activity& one) {
    left -= one.weight;
    return left < 0;
  });
  return found != from.end() ? *found : from.front();
}

MadeSpan Person::spanOf(const Activity& activity, double start, double end) {
  const auto& titles = activity.titles;
  const auto which = static_cast<std::size_t>(chance() * static_cast<double>(titles.size()));
  MadeSpan span{.start = start, .end = end, .app = activity.app};
  span.title = titles[std::min(which, titles.size() - 1)];
  if (activity.domain) {
    span.domain = activity.domain;
    span.url = fmt::format("https://{}/{}/{}", activity.domain, which, activity.titles.size());
  }
  const int number = count_++;
  if (oddities_ || ago_ == kOddDay) {
    const auto& texts = unusualTexts();
    const auto& text = texts[static_cast<std::size_t>(number) % texts.size()];
    span.title = text;
    if (oddities_ && number % 3 == 0) span.app = text;
    if (span.domain && number % 5 == 0) span.domain = span.url = text;
  }
  return span;
}
// What was drawn for the studies was work.
void Person::correct(MadeSpan& span) {
  if (ago_ < kCorrectedBefore || span.app != "Inkscape" || count_ % 3 != 0) return;
  span.category = "travail";
  span.project = kStudies;
}

void liveRestlessly(SpanWriter& spans, double midnight, double now, int count) {
  constexpr std::array<const char*, 7> kApps{"Code",        "Firefox",      "Slack",   "Steam",
                                             "Thunderbird", "Calculatrice", "Inkscape"};
  constexpr double kGap = 0.5;
  const double length = std::floor((now - midnight) / count) - kGap;
  for (int i = 0; i < count; ++i) {
    const double start = midnight + i * (length + kGap);
    spans.add({.start = start,
               .end = start + length,
               .app = kApps.at(static_cast<std::size_t>(i) % kApps.size()),
               .title = fmt::format("Fenêtre nº {} — un titre assez long pour être coupé dans la "
                                    "plupart des listes",
                                    i)});
  }
}

}  // namespace orvanta
