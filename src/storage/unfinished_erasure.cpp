#include "storage/unfinished_erasure.h"

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <iterator>
#include <optional>
#include <utility>

#include "base/exact_json.h"

namespace orvanta::unfinished {
namespace {

// Holds what is still to be erased from the copies: times as [start, end], pasts as objects.
constexpr auto kErasing = "store_erasing";

boost::json::array erasing(Database& db) {
  auto list = parseJson(db.setting(kErasing));
  return list && list->is_array() ? std::move(list->get_array()) : boost::json::array();
}

std::optional<TimeRange> timeIn(const boost::json::value& entry) {
  const auto* pair = entry.if_array();
  if (!pair || pair->size() != 2 || !pair->at(0).is_number() || !pair->at(1).is_number()) return {};
  return TimeRange{pair->at(0).to_number<double>(), pair->at(1).to_number<double>()};
}

std::optional<Past> pastIn(const boost::json::value& entry) {
  const auto* object = entry.if_object();
  if (!object) return {};
  Past past;
  for (const auto& [key, value] : *object) {
    if (key == "time") past.time = value == true;
    if (!value.is_string()) continue;
    if (key == "site") past.site = value.get_string();
    if (key == "app") past.app = value.get_string();
  }
  return past.site.empty() && past.app.empty() ? std::nullopt : std::optional(past);
}

void keep(Transaction& change, const boost::json::array& more) {
  auto all = erasing(change.database());
  all.insert(all.end(), more.begin(), more.end());
  change.run("INSERT OR REPLACE INTO settings(key, value) VALUES (?, ?)",
             {kErasing, boost::json::serialize(all)});
}

}  // namespace

void add(Transaction& change, const std::vector<TimeRange>& times) {
  boost::json::array list;
  for (const auto& [start, end] : times) list.push_back(boost::json::array{start, end});
  keep(change, list);
}

void add(Transaction& change, const Past& past) {
  keep(change, {boost::json::object{{"site", past.site}, {"app", past.app}, {"time", past.time}}});
}

Erasure erasure(Database& db) {
  Erasure all;
  std::vector<TimeRange> times;
  for (const auto& entry : erasing(db)) {
    if (const auto time = timeIn(entry)) times.push_back(*time);
    const auto past = pastIn(entry);
    if (!past) continue;
    auto steps = erasePastInCopy(*past).steps;
    std::move(steps.begin(), steps.end(), std::back_inserter(all.steps));
  }
  if (times.empty()) return all;
  auto steps = eraseTimesInCopy(times).steps;
  std::move(steps.begin(), steps.end(), std::back_inserter(all.steps));
  return all;
}

void clear(Database& db) {
  db.setSetting(kErasing, "").forget();
}

}  // namespace orvanta::unfinished
