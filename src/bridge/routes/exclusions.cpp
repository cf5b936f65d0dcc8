// Sites and applications of which nothing is to be known, from now on or ever.
#include <algorithm>
#include <boost/json/serialize.hpp>
#include <limits>

#include "base/enum_text.h"
#include "base/site.h"
#include "base/text.h"
#include "bridge/change_labels.h"
#include "bridge/routes/routes.h"
#include "storage/past.h"

namespace orvanta {

enum class PastWish { Keep, Blank, Erase };
template <>
inline constexpr std::array<std::string_view, 3> kTexts<PastWish>{"keep", "blank", "erase"};

namespace {

namespace json = boost::json;

constexpr auto kSites = "excluded_domains";
constexpr auto kApps = "excluded_apps";

Past pastIn(const Body& body) {
  constexpr std::size_t kLongest = 500;
  Past past{.site = siteOf(body.trimmed("site").value_or("")), .app = body.s("app").value_or("")};
  const auto& name = past.site.empty() ? past.app : past.site;
  if (name.empty()) throw AppError("site ou application manquant");
  if (storedText(name) != name || name.size() > kLongest) throw AppError("nom invalide");
  if (!past.site.empty()) past.app.clear();
  return past;
}

const char* keyOf(const Past& past) {
  return past.site.empty() ? kApps : kSites;
}

// What cannot be read as a list is none.
std::vector<std::string> listed(Core& core, const char* key) {
  const auto settings = core.db.settings();
  return key == kSites ? settings.excludedDomains : settings.excludedApps;
}

bool isExcluded(Core& core, const Past& past) {
  const auto settings = core.db.settings();
  return past.site.empty() ? settings.excludesApp(past.app) : settings.excludes(past.site);
}

struct Known {
  std::vector<TimeRange> times;
  double seconds = 0;
  int64_t shown = 0;  // spans that have a title, an address or a site
};

// Through all spans, some time of which may lie under others of the site.
template <class Each>
Known recorded(const Past& past, const Each& each) {
  Known known;
  each([&](const Cursor& row) {
    const auto domain = row.str(3);
    const auto url = row.str(4);
    const bool counts = past.site.empty() ? row.str(2) == past.app && row.int_(6).value_or(0) == 0
                                          : showsSite(past.site, domain, url);
    if (!counts) return;
    known.times.push_back({row.dbl(0), row.dbl(1)});
    known.seconds += std::max(row.dbl(1) - row.dbl(0), 0.0);
    if (domain || url || row.str(5)) ++known.shown;
  });
  return known;
}

constexpr auto kSpans = "SELECT start, end, app, domain, url, title, idle FROM events";

json::value preview(Core& core, const Body& body) {
  const auto past = pastIn(body);
  bool whole = true;
  const auto known =
      recorded(past, [&](const auto& take) { whole = core.db.scan(kSpans, {}, take); });
  if (!whole) throw AppError(troubleOr(core, "le fichier des données ne peut pas être lu"));
  json::object answer{{"name", past.site.empty() ? past.app : past.site},
                      {"excluded", isExcluded(core, past)},
                      {"spans", known.times.size()},
                      {"seconds", known.seconds},
                      {"shown", known.shown},
                      {"first", nullptr},
                      {"last", nullptr}};
  if (known.times.empty()) return answer;
  const auto [first, last] = std::minmax_element(
      known.times.begin(), known.times.end(),
      [](const auto& one, const auto& other) { return one.start < other.start; });
  answer["first"] = first->start;
  answer["last"] = last->end;
  return answer;
}

Written choose(Core& core, const char* key, const std::vector<std::string>& names) {
  return chooseSettings(core, {{key, json::serialize(json::array(names.begin(), names.end()))}});
}

Written exclude(Core& core, const Past& past) {
  if (isExcluded(core, past)) return Written::stored();
  auto names = listed(core, keyOf(past));
  names.push_back(past.site.empty() ? lowerCase(past.app) : past.site);
  return choose(core, keyOf(past), names);
}

// What is being recorded of it ends where the rest is erased.
Written forget(Core& core, const Past& past, Known& known) {
  constexpr auto kAlways = std::numeric_limits<double>::max();
  return core.tracker.changeRecorded({-kAlways, kAlways}, [&](const TimeRange&) {
    Transaction change(core.db);
    known = recorded(past, [&](const auto& take) { change.each(kSpans, {}, take); });
    const auto spans = past.time ? static_cast<int64_t>(known.times.size()) : known.shown;
    core.history.erase(change, known.times,
                       {.kind = change_log::kErase,
                        .label = past.time ? labels::erased(spans) : labels::blanked(spans),
                        .spans = spans,
                        .seconds = known.seconds},
                       erasePast(past, known.times));
    // Killed before the copies are erased, the next start does that.
    core.keeper.remember(change, past);
    return change.commit();
  });
}

json::value add(Core& core, const Body& body) {
  auto past = pastIn(body);
  const auto wish = parsed<PastWish>(body.s("past").value_or("keep"));
  if (!wish) throw AppError("ce qui est fait du passé est inconnu");
  past.time = *wish == PastWish::Erase;
  json::object answer{{"ok", true}, {"spans", 0}, {"seconds", 0}};
  auto written = exclude(core, past);
  if (!written || *wish == PastWish::Keep) return told(core, written, std::move(answer));
  Known known;
  written = forget(core, past, known);
  if (!written) return told(core, written, std::move(answer));
  answer["spans"] = past.time ? static_cast<int64_t>(known.times.size()) : known.shown;
  answer["seconds"] = known.seconds;
  return erasedFromCopies(core, past, std::move(answer));
}

json::value remove(Core& core, const Body& body) {
  const auto past = pastIn(body);
  auto names = listed(core, keyOf(past));
  const auto gone = std::erase_if(names, [&](const std::string& name) {
    return past.site.empty() ? name == lowerCase(past.app) : siteOf(name) == past.site;
  });
  if (gone == 0) throw AppError("cette exclusion n’existe pas");
  return told(core, choose(core, keyOf(past), names));
}

constexpr Route kRoutes[]{
    {"exclusions.preview", RouteKind::Ask, preview, "site, app"},
    {"exclusions.add", RouteKind::Ask, add, "site, app, past"},
    {"exclusions.remove", RouteKind::Write, remove, "site, app"},
};

}  // namespace

RouteTable exclusionRoutes() {
  return kRoutes;
}

}  // namespace orvanta
