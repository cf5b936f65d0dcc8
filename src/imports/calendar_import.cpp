#include <glibmm/timezone.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "base/text.h"
#include "imports/calendar_lines.h"
#include "imports/import_times.h"
#include "imports/read_import.h"
#include "imports/recurrence.h"

namespace orvanta {
namespace {

std::optional<Calendar> zoneIn(const std::string& parameters) {
  constexpr std::string_view kZone = "tzid=";
  const auto at = lowerCase(parameters).find(kZone);
  if (at == std::string::npos) return {};
  auto name = parameters.substr(at + kZone.size());
  name = name.substr(0, name.find(';'));
  std::erase(name, '"');
  constexpr std::size_t kLongest = 64;
  // A name may lead to any file.
  if (name.empty() || name.size() > kLongest || name.find("..") != std::string::npos ||
      name.front() == '/')
    return {};
  const auto zone = Glib::TimeZone::create(name);
  return zone.get_identifier().raw() == name ? std::optional(Calendar(zone)) : std::nullopt;
}

std::optional<double> momentOf(const Property& property, const Calendar& calendar) {
  const auto written = writtenTime(property.value, false);
  if (!written) return {};
  if (written->instant) return written->instant;
  if (!written->date || !written->time) return {};
  return instantOf(zoneIn(property.parameters).value_or(calendar), *written->date, *written->time);
}

// "P1DT2H30M".
std::optional<double> periodOf(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  if (!text.starts_with('P')) return {};
  double seconds = 0;
  double number = 0;
  bool any = false;
  for (const char c : text.substr(1)) {
    constexpr double kMost = 1e9;
    if (c >= '0' && c <= '9') {
      number = std::min(number * 10 + (c - '0'), kMost);
      any = true;
    } else if (c != 'T') {
      const double unit = c == 'W'   ? 604800
                          : c == 'D' ? 86400
                          : c == 'H' ? 3600
                          : c == 'M' ? 60
                          : c == 'S' ? 1
                                     : 0;
      if (unit == 0) return {};
      seconds += number * unit;
      number = 0;
    }
  }
  return any ? std::optional(seconds) : std::nullopt;
}

// Some of the times at which an event would come again.
using Instants = std::vector<double>;

class Event {
 public:
  void add(Property property) {
    if (property.name == "exdate") {
      exceptions_.push_back(std::move(property));
    } else {
      properties_.try_emplace(property.name, std::move(property));
    }
  }

  bool comesAgain() const { return find("rrule") != nullptr; }
  std::string uid() const { return text("uid"); }
  // Which of the others' times it takes the place of.
  std::optional<double> replaces(const Calendar& calendar) const {
    const auto* replaced = find("recurrence-id");
    return replaced ? momentOf(*replaced, calendar) : std::nullopt;
  }

  struct Repeating {
    double now;
    const Instants& replaced;
    std::size_t& looks;
  };
  void finish(Imported& imported, const Calendar& calendar, std::size_t line,
              const Repeating& repeating) const;

 private:
  const Property* find(const std::string& name) const {
    const auto found = properties_.find(name);
    return found == properties_.end() ? nullptr : &found->second;
  }
  std::string text(const std::string& name) const {
    const auto* property = find(name);
    return property ? plainText(property->value) : std::string();
  }
  std::optional<double> end(double start, const Calendar& calendar) const;
  void repeat(Imported& imported, const ImportedEvent& first, const Calendar& calendar,
              std::size_t line, const Repeating& repeating) const;
  Instants exceptions(const Calendar& calendar, double secondsOfDay) const;

  std::map<std::string, Property> properties_;
  std::vector<Property> exceptions_;
};

std::optional<double> Event::end(double start, const Calendar& calendar) const {
  if (const auto* ends = find("dtend")) return momentOf(*ends, calendar);
  const auto* lasts = find("duration");
  const auto seconds = lasts ? periodOf(lasts->value) : std::nullopt;
  return seconds ? std::optional(start + *seconds) : std::nullopt;
}

void Event::finish(Imported& imported, const Calendar& calendar, std::size_t line,
                   const Repeating& repeating) const {
  const auto* begins = find("dtstart");
  if (!begins) return imported.reject("sans début", line);
  if (lowerCase(begins->parameters).find("value=date") != std::string::npos &&
      begins->value.find('T') == std::string::npos)
    return imported.reject("journée entière", line);
  if (text("status") == "CANCELLED") return imported.reject("annulé", line);
  const auto start = momentOf(*begins, calendar);
  if (!start) return imported.reject("début illisible", line);
  const auto until = end(*start, calendar);
  if (!until) return imported.reject("ni fin ni durée lisible", line);
  ImportedEvent event{.start = *start,
                      .end = *until,
                      .app = "Agenda",
                      .title = text("summary"),
                      .url = {},
                      .domain = {},
                      .category = {},
                      .project = {}};
  if (comesAgain()) return repeat(imported, event, calendar, line, repeating);
  imported.take(std::move(event), line);
}

// At the same time of the wall's clock, also when that is changed.
void Event::repeat(Imported& imported, const ImportedEvent& first, const Calendar& calendar,
                   std::size_t line, const Repeating& repeating) const {
  const auto& begins = *find("dtstart");
  const auto written = writtenTime(begins.value, false);
  const auto zone = written && written->instant ? Calendar(Glib::TimeZone::create_utc())
                                                : zoneIn(begins.parameters).value_or(calendar);
  const auto date = zone.dateOf(first.start);
  const double seconds = static_cast<double>(zone.wallSeconds(first.start)) -
                         static_cast<double>(Date().daysUntil(date)) * 86400;
  const auto rule = Recurrence::parse(find("rrule")->value, date);
  if (!rule) {
    imported.reject("répétitions d’un autre genre, dont seule la première est prise", line);
    return imported.take(first, line);
  }
  auto left = exceptions(zone, seconds);
  left.insert(left.end(), repeating.replaced.begin(), repeating.replaced.end());
  std::sort(left.begin(), left.end());
  const auto last = rule->until.empty() ? std::nullopt
                    : rule->until.find('T') == std::string_view::npos
                        ? momentOf({"until", "", std::string(rule->until) + "T235959"}, zone)
                        : momentOf({"until", "", std::string(rule->until)}, zone);
  std::size_t seen = 0;
  rule->each(date, zone.dateOf(repeating.now), repeating.looks, [&](const Date& day) {
    const double at = seen == 0 ? first.start : instantOf(zone, day, seconds);
    const bool over = (last && at > *last) || at > repeating.now;
    if ((over && seen > 0) || (rule->count && seen == *rule->count)) return false;
    ++seen;
    if (std::binary_search(left.begin(), left.end(), at)) return true;
    auto event = first;
    event.end += at - event.start;
    event.start = at;
    imported.take(std::move(event), line);
    return imported.events.size() < kMostImported;
  });
  if (repeating.looks == 0) imported.reject("trop de répétitions", line);
}

// Also those that name a day only.
Instants Event::exceptions(const Calendar& calendar, double secondsOfDay) const {
  Instants list;
  for (const auto& property : exceptions_) {
    for (std::string_view rest = property.value; !rest.empty();) {
      const auto end = std::min(rest.find(','), rest.size());
      const Property one{property.name, property.parameters, std::string(rest.substr(0, end))};
      rest.remove_prefix(std::min(end + 1, rest.size()));
      const auto written = writtenTime(one.value, false);
      const bool day = written && written->date && !written->time;
      const auto at = day ? std::optional(instantOf(calendar, *written->date, secondsOfDay))
                          : momentOf(one, calendar);
      if (at) list.push_back(*at);
    }
  }
  return list;
}

// Those that come again wait until all is read: others may take the place of some of their times.
class Events {
 public:
  Events(const Calendar& calendar, double now, Imported& imported)
      : calendar_(calendar), now_(now), imported_(imported) {}

  void add(Event event, std::size_t line) {
    if (const auto at = event.replaces(calendar_)) replaced_[event.uid()].push_back(*at);
    if (event.comesAgain()) {
      repeating_.emplace_back(std::move(event), line);
    } else {
      event.finish(imported_, calendar_, line, {now_, {}, looks_});
    }
  }

  void finish() {
    for (const auto& [event, line] : repeating_) {
      event.finish(imported_, calendar_, line, {now_, replaced_[event.uid()], looks_});
    }
  }

 private:
  const Calendar& calendar_;
  const double now_;
  Imported& imported_;
  std::size_t looks_ = 300'000;  // for all of a file, some tenths of a second
  std::vector<std::pair<Event, std::size_t>> repeating_;
  std::map<std::string, Instants> replaced_;
};

}  // namespace

Imported readCalendarFile(std::string_view text, const Calendar& calendar, double now) {
  Imported imported{.kind = ImportKind::Ics, .problem = {}};
  Events events(calendar, now, imported);
  std::optional<Event> event;
  std::size_t begun = 0;
  int inner = 0;  // an alarm within has a duration of its own
  for (CalendarLines lines(text); lines.next();) {
    auto property = propertyIn(lines.line());
    if (!property) continue;
    const auto what = lowerCase(property->value);
    const bool ofEvent = what == "vevent";
    if (property->name == "begin") {
      if (ofEvent) event.emplace();
      if (ofEvent) begun = lines.number();
      inner = ofEvent ? 0 : inner + 1;
    } else if (property->name == "end") {
      if (ofEvent && event) events.add(std::move(*event), begun);
      if (ofEvent) event.reset();
      inner = ofEvent ? 0 : inner - 1;
    } else if (event && inner == 0) {
      event->add(std::move(*property));
    }
  }
  if (event) imported.reject("fichier coupé", begun);
  events.finish();
  return imported;
}

}  // namespace orvanta
