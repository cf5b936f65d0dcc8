#include "app/local_call.h"

#include <glibmm/main.h>

#include <iostream>

#include "app/call_loop.h"
#include "app/command_line.h"
#include "bridge/core.h"
#include "platform/desktop.h"

namespace orvanta {
namespace {

// The probes of this session, given some seconds to find their services.
Desktop lookAtDesktop(double patience) {
  auto desktop = observeDesktop(connectBus(Gio::DBus::BusType::SYSTEM),
                                connectBus(Gio::DBus::BusType::SESSION), systemLog);
  desktop.session->listen(
      {.lockChanged = [](bool) {}, .willSleep = [] {}, .didWake = [] {}, .sessionEnded = [] {}});
  constexpr unsigned kStep = 10;  // milliseconds
  const auto context = Glib::MainContext::get_default();
  for (const double end = wallClock() + patience; wallClock() < end;) {
    if (desktop.sources().foreground != kNoSource && desktop.sources().session != kNoSource) break;
    const auto timer = Glib::signal_timeout().connect([] { return false; }, kStep);
    context->iteration(true);
  }
  return desktop;
}

}  // namespace

CallResult callLocally(const std::vector<std::string>& words) {
  constexpr double kMoment = 0.5;  // seconds
  const bool many = words == std::vector<std::string>{kManyCalls};
  const auto route = words.empty() ? std::string() : words.front();
  const bool aboutDesktop = route == "status" || route.starts_with("permissions.");
  auto desktop = many || aboutDesktop ? lookAtDesktop(many ? 0 : kMoment) : blindDesktop();
  Database db(DataLocation::ofUser());
  CommandLine shell;
  Core core({.db = db, .desktop = desktop, .shell = shell});
  if (many) {
    answerLines(core, std::cin, std::cout);
    return {};
  }
  auto result = callRoute(core.router, words);
  if (!db.readable()) {
    result.status = 1;
    result.complaint = sentenceOf(StoreTrouble::Absent);
  }
  return result;
}

}  // namespace orvanta
