// A table of another program: what is read of it, written as our own export, is read as the same.
#include <cmath>

#include "fuzz/imports.h"
#include "imports/import_text.h"
#include "reports/csv.h"

namespace orvanta::fuzz {
namespace {

// Projects by number, as the store has them.
std::string exported(const std::vector<ImportedEvent>& events) {
  Projects projects;
  for (const auto& event : events) {
    const auto id = static_cast<int64_t>(projects.size()) + 1;
    projects[id].name = event.project;
  }
  std::string csv;
  CsvWriter writer(paris(), projects, [&](std::string_view text) { csv += text; });
  int64_t id = 0;
  for (const auto& event : events) {
    writer.add({.start = std::floor(event.start),
                .end = std::floor(event.start) + std::floor(event.end - event.start),
                .app = Text::borrowed(event.app),
                .title = Text::borrowed(event.title),
                .url = Text::borrowed(event.url),
                .domain = Text::borrowed(event.domain),
                .cat = Text::borrowed("travail"),
                .pid = ++id});
  }
  writer.finish();
  return csv;
}

// Of the hour that comes twice the first is meant, so that one cannot come back.
bool clocksGoBackNear(double instant) {
  return paris().wallSeconds(instant - 7300) - (instant - 7300) !=
         paris().wallSeconds(instant + 90000) - (instant + 90000);
}

void checkSame(const ImportedEvent& event, const ImportedEvent& again) {
  for (const auto text : {&ImportedEvent::app, &ImportedEvent::domain, &ImportedEvent::title,
                          &ImportedEvent::url, &ImportedEvent::project}) {
    hold(event.*text == again.*text, "a text comes back", again.*text);
  }
  if (clocksGoBackNear(event.start)) return;
  hold(std::floor(event.start) == again.start, "a start comes back");
}

}  // namespace

void target(std::string_view input) {
  auto choose = chooser(input);
  ImportChoice choice;
  if (choose.ConsumeBool()) choice.monthFirst = choose.ConsumeBool();
  if (choose.ConsumeBool()) {
    choice.mapping.emplace();
    for (const auto column : {Column::Start, Column::End, Column::Duration, Column::Title}) {
      (*choice.mapping)[column] = choose.ConsumeIntegralInRange<std::size_t>(0, 5);
    }
  }
  const auto bytes = choose.ConsumeRemainingBytesAsString();
  const auto [text, problem] = importText(std::string_view(bytes));
  if (!problem.empty()) return;
  holdUtf8(text, "a file becomes UTF-8");
  const auto imported = readTable(text, paris(), choice);
  checkImported(imported);
  if (imported.events.empty()) return;
  const auto csv = importText(std::string_view(exported(imported.events)));
  const auto again = readTable(csv.text, paris(), {});
  hold(again.problem.empty(), "our export is read", again.problem);
  hold(again.events.size() == imported.events.size(), "all of it comes back", csv.text);
  for (std::size_t i = 0; i < again.events.size(); ++i) {
    checkSame(imported.events[i], again.events[i]);
  }
}

}  // namespace orvanta::fuzz
