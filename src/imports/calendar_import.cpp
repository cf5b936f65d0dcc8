#include <glibmm/timezone.h>

#include <algorithm>
#include <map>

#include "base/text.h"
#include "imports/import_times.h"
#include "imports/read_import.h"

namespace orvanta {
namespace {

// A line of a calendar file: NAME;PARAMETER=…:VALUE.
struct Property {
  std::string name;  // lower-cased
  std::string parameters;
  std::string value;
};

// One after the other: a file of nothing but line ends would be a hundred times as large in a list.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text) {}

  // Long lines go on in the next, which then begins with a blank.
  bool next() {
    if (text_.empty()) return false;
    number_ = read_ + 1;
    line_ = piece();
    while (text_.starts_with(' ') || text_.starts_with('\t')) line_ += piece().substr(1);
    return true;
  }
  const std::string& line() const { return line_; }
  std::size_t number() const { return number_; }

 private:
  std::string_view piece() {
    const auto end = std::min(text_.find('\n'), text_.size());
    auto piece = text_.substr(0, end);
    text_.remove_prefix(std::min(end + 1, text_.size()));
    ++read_;
    if (piece.ends_with('\r')) piece.remove_suffix(1);
    return piece;
  }

  std::string_view text_;
  std::size_t read_ = 0;
  std::string line_;
  std::size_t number_ = 0;  // of its first piece, counted from 1
};

std::optional<Property> propertyIn(std::string_view line) {
  bool quoted = false;
  std::size_t colon = 0;
  for (; colon < line.size() && (quoted || line[colon] != ':'); ++colon) {
    if (line[colon] == '"') quoted = !quoted;
  }
  if (colon == line.size()) return {};
  const auto head = line.substr(0, colon);
  const auto end = std::min(head.find(';'), head.size());
  return Property{lowerCase(head.substr(0, end)), std::string(head.substr(end)),
                  std::string(line.substr(colon + 1))};
}

std::string plainText(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const bool escaped = value[i] == '\\' && i + 1 < value.size();
    if (escaped) ++i;
    text += escaped && (value[i] == 'n' || value[i] == 'N') ? ' ' : value[i];
  }
  return text;
}

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

class Event {
 public:
  void add(Property property) { properties_.try_emplace(property.name, std::move(property)); }

  void finish(Imported& imported, const Calendar& calendar, std::size_t line) const {
    const auto* begins = find("dtstart");
    if (!begins) return imported.reject("sans début", line);
    if (lowerCase(begins->parameters).find("value=date") != std::string::npos &&
        begins->value.find('T') == std::string::npos)
      return imported.reject("journée entière", line);
    if (text("status") == "CANCELLED") return imported.reject("annulé", line);
    const auto start = momentOf(*begins, calendar);
    if (!start) return imported.reject("début illisible", line);
    const auto* ends = find("dtend");
    const auto* lasts = find("duration");
    std::optional<double> end;
    if (ends) end = momentOf(*ends, calendar);
    if (!ends && lasts) {
      if (const auto seconds = periodOf(lasts->value)) end = *start + *seconds;
    }
    if (!end) return imported.reject("ni fin ni durée lisible", line);
    // Of an event that comes again and again only the first is there.
    if (find("rrule")) imported.reject("répétitions, dont seule la première est prise", line);
    imported.take({.start = *start,
                   .end = *end,
                   .app = "Agenda",
                   .title = text("summary"),
                   .url = {},
                   .domain = {},
                   .category = {},
                   .project = {}},
                  line);
  }

 private:
  const Property* find(const std::string& name) const {
    const auto found = properties_.find(name);
    return found == properties_.end() ? nullptr : &found->second;
  }
  std::string text(const std::string& name) const {
    const auto* property = find(name);
    return property ? plainText(property->value) : std::string();
  }

  std::map<std::string, Property> properties_;
};

}  // namespace

Imported readCalendarFile(std::string_view text, const Calendar& calendar) {
  Imported imported{.kind = ImportKind::Ics, .problem = {}};
  std::optional<Event> event;
  std::size_t begun = 0;
  int inner = 0;  // an alarm within has a duration of its own
  for (Lines lines(text); lines.next();) {
    auto property = propertyIn(lines.line());
    if (!property) continue;
    const auto what = lowerCase(property->value);
    const bool ofEvent = what == "vevent";
    if (property->name == "begin") {
      if (ofEvent) event.emplace();
      if (ofEvent) begun = lines.number();
      inner = ofEvent ? 0 : inner + 1;
    } else if (property->name == "end") {
      if (ofEvent && event) event->finish(imported, calendar, begun);
      if (ofEvent) event.reset();
      inner = ofEvent ? 0 : inner - 1;
    } else if (event && inner == 0) {
      event->add(std::move(*property));
    }
  }
  if (event) imported.reject("fichier coupé", begun);
  return imported;
}

}  // namespace orvanta
