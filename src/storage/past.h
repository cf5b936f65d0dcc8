// What was recorded of a site or an application, and how it is taken back out of a store.
#pragma once

#include <sqlite3.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/calendar.h"
#include "storage/erasure.h"

namespace orvanta {

/// All that was ever recorded of a site, with what lies under it, or else of an application.
struct Past {
  std::string site;   ///< as siteOf() yields it; "" for an application
  std::string app;    ///< its name as it is stored
  bool time = false;  ///< the spans are erased; else what they show: titles, addresses and sites
};

/// Whether a span with this domain and address shows the site, see sitesIn().
bool showsSite(std::string_view site, std::optional<std::string_view> domain,
               std::optional<std::string_view> url);

/// Statements by which the site's spans are found ask this function of SQL: shows_site(site,
/// domain, url). Part of addErasing().
void addShowsSite(sqlite3* connection);

/// What chooses its spans, as a condition on ?1.
struct PastSpans {
  std::string condition;
  Value arg;
};
PastSpans spansOf(const Past& past);

/// Erases it from the store, with what the history of changes holds of these times, which are those
/// of its spans.
Erasure erasePast(const Past& past, const std::vector<TimeRange>& times);

/// The same in a copy of the store, whose history of changes is not looked through: whatever holds
/// a span or names something leaves it.
Erasure erasePastInCopy(const Past& past);

}  // namespace orvanta
