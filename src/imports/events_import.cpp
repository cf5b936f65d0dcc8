#include <boost/json/value.hpp>
#include <initializer_list>

#include "base/exact_json.h"
#include "imports/import_times.h"
#include "imports/read_import.h"

namespace orvanta {
namespace {

namespace json = boost::json;
using Names = std::initializer_list<const char*>;

const json::value* find(const json::object& object, Names names) {
  for (const auto* name : names) {
    const auto* value = object.if_contains(name);
    if (value && !value->is_null()) return value;
  }
  return nullptr;
}

std::string textOf(const json::value* value) {
  return value && value->is_string() ? std::string(value->get_string()) : std::string();
}

std::optional<double> momentOf(const json::value* value, const Calendar& calendar) {
  constexpr double kMilliseconds = 1e11;
  if (!value) return {};
  if (value->is_number()) {
    const double number = value->to_number<double>();
    return number >= kMilliseconds ? number / 1000 : number;
  }
  if (!value->is_string()) return {};
  const auto written = writtenTime(value->get_string(), false);
  if (!written) return {};
  if (written->instant) return written->instant;
  if (!written->date || !written->time) return {};
  return instantOf(calendar, *written->date, *written->time);
}

std::optional<double> endOf(const json::object& event, double start, const Calendar& calendar) {
  static const Names kEnds{"end", "stop", "end_time", "endTime", "ended_at", "to"};
  if (const auto end = momentOf(find(event, kEnds), calendar)) return end;
  const auto* lasts = find(event, {"duration", "seconds"});
  if (!lasts) return {};
  if (lasts->is_number()) return start + lasts->to_number<double>();
  const auto seconds = writtenDuration(textOf(lasts), 1);
  return seconds ? std::optional(start + *seconds) : std::nullopt;
}

class Finder {
 public:
  Finder(const Calendar& calendar, Imported& imported) : calendar_(calendar), imported_(imported) {}

  // Lists of events lie at any depth.
  void look(const json::value& value) {
    if (const auto* list = value.if_array()) {
      for (const auto& entry : *list) look(entry);
    }
    const auto* object = value.if_object();
    if (!object || event(*object)) return;
    for (const auto& [name, member] : *object) look(member);
  }

 private:
  bool event(const json::object& object) {
    static const Names kStarts{"start", "timestamp",  "start_time", "startTime",
                               "begin", "started_at", "from"};
    const auto* begins = find(object, kStarts);
    if (!begins || begins->is_object() || begins->is_array()) return false;
    ++number_;
    const auto start = momentOf(begins, calendar_);
    if (!start) {
      imported_.reject("début illisible", number_);
      return true;
    }
    const auto end = endOf(object, *start, calendar_);
    if (!end) {
      imported_.reject("ni fin ni durée lisible", number_);
      return true;
    }
    take(object, *start, *end);
    return true;
  }

  void take(const json::object& object, double start, double end) {
    const auto* inner = find(object, {"data"});
    const auto* data = inner ? inner->if_object() : nullptr;
    const auto text = [&](Names names) {
      auto found = data ? textOf(find(*data, names)) : std::string();
      return found.empty() ? textOf(find(object, names)) : found;
    };
    // Whether somebody is there is no activity.
    if (!text({"status"}).empty() && text({"app", "title"}).empty()) {
      return imported_.reject("sans application ni titre", number_);
    }
    imported_.take({.start = start,
                    .end = end,
                    .app = text({"app", "application"}),
                    .title = text({"title", "description", "note", "summary", "name"}),
                    .url = text({"url"}),
                    .domain = text({"domain", "site"}),
                    .category = text({"category"}),
                    .project = text({"project", "project_name"})},
                   number_);
  }

  const Calendar& calendar_;
  Imported& imported_;
  std::size_t number_ = 0;  // of the event
};

}  // namespace

Imported readEvents(std::string_view text, const Calendar& calendar) {
  Imported imported{.kind = ImportKind::Json, .problem = {}};
  const auto value = parseJson(text);
  if (!value) {
    imported.problem = "ce n’est pas du JSON complet";
    return imported;
  }
  Finder(calendar, imported).look(*value);
  if (imported.events.empty() && imported.rejected.empty()) {
    imported.problem = "aucune activité avec un début et une durée";
  }
  return imported;
}

}  // namespace orvanta
