#include "storage/past.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/site.h"

namespace orvanta {
namespace {

std::optional<std::string_view> textOf(sqlite3_value* value) {
  if (sqlite3_value_type(value) != SQLITE_TEXT) return {};
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
}

void showsSiteInSql(sqlite3_context* context, int /*count*/, sqlite3_value** args) {
  const auto site = textOf(args[0]);
  sqlite3_result_int(context, site && showsSite(*site, textOf(args[1]), textOf(args[2])) ? 1 : 0);
}

Erasure::Step rowsOf(const Past& past) {
  const auto [condition, arg] = spansOf(past);
  if (past.time) return {"DELETE FROM events WHERE " + condition, {arg}};
  return {
      "UPDATE events SET title=NULL, url=NULL, domain=NULL WHERE (title IS NOT NULL OR url IS NOT "
      "NULL OR domain IS NOT NULL) AND " +
          condition,
      {arg}};
}

}  // namespace

bool showsSite(std::string_view site, std::optional<std::string_view> domain,
               std::optional<std::string_view> url) {
  if (site.empty()) return false;
  if (domain && liesUnder(siteOf(*domain), site)) return true;
  if (!url) return false;
  const auto sites = sitesIn(*url);
  return std::any_of(sites.begin(), sites.end(),
                     [&](const auto& shown) { return liesUnder(shown, site); });
}

void addShowsSite(sqlite3* connection) {
  constexpr int kArgs = 3;
  sqlite3_create_function_v2(connection, "shows_site", kArgs,
                             SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY, nullptr,
                             showsSiteInSql, nullptr, nullptr, nullptr);
}

PastSpans spansOf(const Past& past) {
  if (!past.site.empty()) return {"shows_site(?1, domain, url)", past.site};
  return {"app = ?1 AND idle = 0", past.app};
}

Erasure erasePast(const Past& past, const std::vector<TimeRange>& times) {
  Erasure all{{rowsOf(past)}};
  auto rest = forgetChanges(times).steps;
  std::move(rest.begin(), rest.end(), std::back_inserter(all.steps));
  return all;
}

Erasure erasePastInCopy(const Past& past) {
  return {{rowsOf(past),
           {"DELETE FROM changes WHERE held_from IS NOT NULL OR words IS NOT NULL", {}, true},
           {"UPDATE changes SET examples=NULL WHERE examples IS NOT NULL", {}, true}}};
}

}  // namespace orvanta
