// The spans of a range of time, read and clipped one by one.
#pragma once

#include <boost/json/object.hpp>
#include <optional>
#include <string>
#include <vector>

#include "classify/rule_set.h"
#include "support/naive.h"

namespace orvanta::test {

struct NaiveSpan : NaiveClassification {
  int64_t id = 0;
  double start = 0;
  double end = 0;
  std::string app;
  std::optional<std::string> title;
  std::optional<std::string> domain;
  std::optional<std::string> url;
  bool idle = false;

  double duration() const { return std::max(end - start, 0.0); }
};
using NaiveSpans = std::vector<NaiveSpan>;

inline std::vector<Rule> naiveRules(Database& db) {
  std::vector<Rule> rules;
  for (const auto& row :
       db.query("SELECT * FROM rules ORDER BY priority DESC, length(pattern) DESC, id")) {
    rules.push_back({.id = *row.int_("id"),
                     .field = *row.str("field"),
                     .pattern = *row.str("pattern"),
                     .category = row.str("category"),
                     .projectId = row.int_("project_id"),
                     .priority = row.int_("priority").value_or(0)});
  }
  return rules;
}

inline NaiveSpans naiveSpans(Database& db, double from, double to) {
  const auto rules = naiveRules(db);
  const auto projects = loadProjects(db);
  NaiveSpans spans;
  for (const auto& row : db.query(
           "SELECT * FROM events WHERE end > ? AND start < ? ORDER BY start, id", {from, to})) {
    StringPool pool;
    const auto text = [&](const char* column) {
      const auto value = row.str(column);
      return value ? pool.intern(*value) : Text();
    };
    const Ev raw{.app = pool.intern(row.str("app").value_or("Inconnu")),
                 .title = text("title"),
                 .url = text("url"),
                 .domain = text("domain"),
                 .idle = row.int_("idle") == 1,
                 .category = text("category"),
                 .projectId = row.int_("project_id")};
    spans.push_back({naiveClassification(raw, rules, projects), *row.int_("id"),
                     std::max(row.dbl("start"), from), std::min(row.dbl("end"), to), raw.app.str(),
                     row.str("title"), row.str("domain"), row.str("url"), raw.idle});
  }
  return spans;
}

template <class Condition>
NaiveSpans naiveFilter(const NaiveSpans& spans, const Condition& condition) {
  NaiveSpans kept;
  for (const auto& span : spans) {
    if (condition(span)) kept.push_back(span);
  }
  return kept;
}

inline NaiveSpans naiveActive(const NaiveSpans& spans) {
  return naiveFilter(spans, [](const NaiveSpan& span) { return !span.idle; });
}

/// Cuts the list where a span does not continue the run before it.
template <class Continues>
std::vector<NaiveSpans> naiveRuns(const NaiveSpans& spans, const Continues& continues) {
  std::vector<NaiveSpans> runs;
  for (const auto& span : spans) {
    if (runs.empty() || !continues(runs.back(), span)) runs.emplace_back();
    runs.back().push_back(span);
  }
  return runs;
}

}  // namespace orvanta::test
