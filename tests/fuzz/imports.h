// What holds of every file of another program that is to be imported.
#pragma once

#include <glibmm/timezone.h>

#include <algorithm>
#include <vector>

#include "base/cut.h"
#include "fuzz/fuzz.h"
#include "imports/import_plan.h"
#include "imports/read_import.h"

namespace orvanta::fuzz {

inline const Calendar& paris() {
  static const auto kCalendar = Calendar(Glib::TimeZone::create("Europe/Paris")).pinned();
  return kCalendar;
}

inline void checkEvent(const ImportedEvent& event) {
  constexpr double kDay = 86400;
  hold(event.end - event.start >= 1 && event.end - event.start <= kDay, "it lasts up to a day");
  hold(event.start >= 631152000 && event.end <= 4102444800, "it lies between 1990 and 2100");
  for (const auto* text :
       {&event.app, &event.title, &event.url, &event.domain, &event.category, &event.project}) {
    holdUtf8(*text, "texts are UTF-8");
    hold(text->size() <= kLongestTitle, "texts are cut");
    hold(std::none_of(text->begin(), text->end(),
                      [](unsigned char c) { return c < ' ' || c == 0x7f; }),
         "texts are one line", *text);
  }
}

/// Whatever is recorded already, here every other quarter of an hour.
inline void checkPlan(std::vector<ImportedEvent> events) {
  constexpr double kNow = 1'800'000'000;
  std::sort(events.begin(), events.end(),
            [](const auto& one, const auto& other) { return one.start < other.start; });
  Occupied occupied;
  if (!events.empty()) {
    for (int i = 0; i < 20; ++i) {
      const double start = events.front().start + 1800 * i + 600.5;
      occupied.push_back({start, start + 900});
    }
  }
  const auto plan = planImport(events, occupied, kNow);
  double end = 0;
  double seconds = 0;
  for (const auto& span : plan.spans) {
    hold(span.start >= end && span.end > span.start, "spans follow each other");
    hold(span.end <= kNow, "nothing is in the future");
    hold(span.start >= span.event->start && span.end <= span.event->end, "within its event");
    for (const auto& taken : occupied) {
      hold(span.end <= taken.start || span.start >= taken.end, "what is recorded stays");
    }
    end = span.end;
    seconds += span.end - span.start;
  }
  hold(std::abs(seconds - plan.seconds) < 1, "the sum is that of the spans");
}

inline void checkImported(const Imported& imported) {
  holdUtf8(imported.problem, "a problem is UTF-8");
  for (const auto& [reason, count] : imported.rejected) hold(count.count > 0, reason);
  for (const auto& column : imported.columns) {
    holdUtf8(column.name, "columns are UTF-8");
    for (const auto& example : column.examples) holdUtf8(example, "examples are UTF-8");
  }
  for (const auto& event : imported.events) checkEvent(event);
  checkPlan(imported.events);
}

}  // namespace orvanta::fuzz
