// Finding again what was done.
#include <algorithm>
#include <limits>

#include "bridge/change_labels.h"
#include "bridge/routes/routes.h"
#include "reports/activity_search.h"
#include "reports/csv_file.h"
#include "reports/spans.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr std::size_t kLongestText = 500;
constexpr int64_t kMostDays = 60;
constexpr std::size_t kMostSpans = 20'000;

std::string textIn(const Body& body) {
  auto text = body.s("text").value_or("");
  if (text.size() > kLongestText) throw AppError("recherche trop longue");
  return text;
}

template <class Value>
json::value orNull(const std::optional<Value>& value) {
  return value ? json::value(*value) : json::value();
}

std::string_view nameOf(Found::Subject::Kind kind) {
  using Kind = Found::Subject::Kind;
  return kind == Kind::Project ? "project" : kind == Kind::Domain ? "domain" : "app";
}

json::object rowJson(const Found::Row& row) {
  return {{"start", row.start},
          {"end", row.end},
          {"duration", row.seconds},
          {"app", row.app},
          {"domain", orNull(row.domain)},
          {"title", orNull(row.title)},
          {"url", orNull(row.url)},
          {"category", row.cat},
          {"project_id", orNull(row.pid)},
          {"ids", json::array(row.ids.begin(), row.ids.end())}};
}

std::string monthText(int number) {
  constexpr int kMonthsPerYear = 12;
  constexpr std::size_t kMonthLength = 7;
  const auto year = static_cast<int>(floorDivide(number, kMonthsPerYear));
  return Date{year, number - year * kMonthsPerYear + 1, 1}.iso().substr(0, kMonthLength);
}

json::value find(Core& core, const Body& body) {
  SearchQuestion question{.text = textIn(body), .wait = body.b("wait").value_or(false)};
  if (body.s("before")) question.before = dateIn(core, body, "before");
  question.days =
      static_cast<std::size_t>(std::clamp(body.i("days").value_or(10), int64_t{1}, kMostDays));
  const auto found = core.analytics.search().find(question);
  json::array months;
  for (const auto& [number, seconds] : found.months) {
    months.push_back({{"month", monthText(number)}, {"duration", seconds}});
  }
  json::array subjects;
  for (const auto& subject : found.subjects) {
    subjects.push_back({{"kind", nameOf(subject.kind)},
                        {"name", subject.name},
                        {"project_id", orNull(subject.project)},
                        {"duration", subject.seconds}});
  }
  json::array days;
  for (const auto& day : found.days) {
    json::array rows;
    for (const auto& row : day.rows) rows.push_back(rowJson(row));
    days.push_back({{"date", day.date.iso()},
                    {"duration", day.seconds},
                    {"rows", std::move(rows)},
                    {"more", day.more}});
  }
  json::object answer{{"text", question.text},        {"duration", found.seconds},
                      {"first", orNull(found.first)}, {"last", orNull(found.last)},
                      {"months", std::move(months)},  {"subjects", std::move(subjects)},
                      {"days", std::move(days)},      {"more", found.more},
                      {"building", found.building}};
  if (!found.whole) answer["incomplete"] = kIncomplete;
  return answer;
}

json::value spans(Core& core, const Body& body) {
  json::array ids;
  double seconds = 0;
  bool more = false;
  const bool whole = core.analytics.search().each(textIn(body), [&](const Ev& ev) {
    more = more || ids.size() == kMostSpans;
    if (more) return;
    ids.emplace_back(ev.id);
    seconds += ev.duration();
  });
  json::object answer{{"ids", std::move(ids)}, {"duration", seconds}, {"more", more}};
  if (!whole) answer["incomplete"] = kIncomplete;
  return answer;
}

json::value exportFound(Core& core, const Body& body) {
  const auto text = textIn(body);
  const auto file = core.shell.saveAs("lumaplan_recherche.csv");
  if (!file) return json::object{{"ok", false}};
  if (file->empty()) return unwritten("cet endroit n’est pas un dossier de cet ordinateur");
  const auto written = writeFoundCsv(core.analytics, text, *file);
  return written ? done() : unwritten(written.problem);
}

struct FoundSpans {
  std::vector<int64_t> ids;
  std::vector<TimeRange> times;
  double seconds = 0;
};

FoundSpans foundSpans(Core& core, const std::string& text) {
  FoundSpans found;
  const bool whole = core.analytics.search().each(text, [&](const Ev& ev) {
    found.ids.push_back(ev.id);
    found.times.push_back({ev.start, ev.end});
    found.seconds += ev.duration();
  });
  if (!whole) throw AppError(kIncomplete);
  return found;
}

json::object foundJson(const FoundSpans& found) {
  json::object answer{{"ok", true},
                      {"spans", found.ids.size()},
                      {"seconds", found.seconds},
                      {"first", nullptr},
                      {"last", nullptr}};
  if (found.times.empty()) return answer;
  answer["first"] = found.times.front().start;
  double last = found.times.front().end;
  for (const auto& time : found.times) last = std::max(last, time.end);
  answer["last"] = last;
  return answer;
}

// What is being recorded of it ends where the rest is erased.
json::value erase(Core& core, const Body& body) {
  constexpr auto kAlways = std::numeric_limits<double>::max();
  const auto text = textIn(body);
  if (body.b("preview").value_or(false)) return foundJson(foundSpans(core, text));
  FoundSpans found;
  const auto written =
      core.tracker.changeRecorded({-kAlways, kAlways}, [&](const TimeRange& /*until*/) {
        found = foundSpans(core, text);
        if (found.ids.empty()) return Written::stored();
        Transaction change(core.db);
        const auto spans = static_cast<int64_t>(found.ids.size());
        core.history.erase(change, found.times,
                           {.kind = change_log::kErase,
                            .label = labels::erased(spans),
                            .spans = spans,
                            .seconds = found.seconds},
                           eraseSpans(found.ids, found.times));
        // Killed before the copies are erased, the next start does that.
        core.keeper.remember(change, found.times);
        return change.commit();
      });
  if (!written) return told(core, written, foundJson({}));
  if (found.ids.empty()) return foundJson(found);
  return erasedFromCopies(core, found.times, foundJson(found));
}

constexpr Route kRoutes[]{
    {"search.find", RouteKind::Read, find, "text, before, days, wait"},
    {"search.spans", RouteKind::Read, spans, "text"},
    {"search.export", RouteKind::Ask, exportFound, "text"},
    {"search.erase", RouteKind::Ask, erase, "text, preview"},
};

}  // namespace

RouteTable searchRoutes() {
  return kRoutes;
}

}  // namespace orvanta
