#include "app/return_note.h"

#include <fmt/format.h>

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <chrono>
#include <utility>

#include "base/display_text.h"
#include "base/number.h"
#include "base/time_ranges.h"
#include "bridge/absence.h"
#include "bridge/request.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr std::size_t kLongestName = 40;

}  // namespace

ReturnNote::ReturnNote(Core& core, dbus::Notifications& notes, PostRoute post)
    : core_(core), notes_(notes), post_(std::move(post)) {}

// Not here: what is likely is read from the store.
void ReturnNote::ask(const TimeRange& absence) {
  const auto sameDay = [this](const TimeRange& time) {
    return core_.calendar.dateOf(time.start) == core_.calendar.dateOf(time.end);
  };
  if (!sameDay(absence)) return;
  const std::weak_ptr self(self_);
  post_("moments.gaps", [&core = core_, self, absence] {
    constexpr double kMinute = 60;
    const double least = absence::askMinutes(core.db) * kMinute;
    if (least <= 0 || length(absence) < least) return;
    auto likely = core.analytics.likelyProjects(absence);
    if (likely.empty()) return;
    core.shell.post([self, absence, likely = std::move(likely)] {
      if (const auto note = self.lock()) (*note)->show(absence, likely);
    });
  });
}

void ReturnNote::show(const TimeRange& absence, const std::vector<Project>& likely) {
  constexpr std::chrono::seconds kAgain{2};
  if (core_.desktop.session->locked()) {
    mainThread_.after(kAgain, [this, absence, likely] { show(absence, likely); });
    return;
  }
  dbus::Note note{.slot = "absence",
                  .summary = "De retour après " + fmtDur(length(absence)),
                  .body = fmt::format("À quoi attribuer le temps de {} à {} ?",
                                      core_.calendar.wallTime(absence.start),
                                      core_.calendar.wallTime(absence.end))};
  for (const auto& project : likely) {
    note.actions.emplace_back(std::to_string(project.id), oneLine(project.name, kLongestName));
  }
  note.actions.emplace_back("pause", "Pause");
  note.actions.emplace_back("ignore", "Ignorer");
  notes_.show(
      std::move(note),
      [this, absence](const auto& action, const auto& token) { answered(absence, action, token); },
      [this](const auto& sentence) { core_.shell.tell(sentence); });
}

void ReturnNote::answered(const TimeRange& absence, const std::string& action,
                          const std::string& token) {
  json::object body{{"ranges", json::array{{{"from", absence.start}, {"to", absence.end}}}}};
  if (action == "default") {
    core_.shell.showDashboard(token, core_.calendar.dateOf(absence.start).iso());
  } else if (action == "pause") {
    call("moments.skip", std::move(body));
  } else if (const auto project = parseNumber<int64_t>(action)) {
    body["project_id"] = *project;
    call("moments.add", std::move(body));
  }
}

// Nobody looks at the answer but when it tells that nothing came of it.
void ReturnNote::call(const std::string& route, json::object body) {
  post_(route, [&core = core_, route, body = std::move(body)] {
    const auto result = answer(core.router, route, body);
    if (!result.failed) return;
    const auto told = json::parse(result.json);
    const auto* why = told.as_object().if_contains("error");
    if (!why) why = told.as_object().if_contains("message");
    if (why && why->is_string()) core.shell.tell(std::string(why->get_string()));
  });
}

}  // namespace orvanta
