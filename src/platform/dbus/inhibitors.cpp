#include "platform/dbus/inhibitors.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/sources.h"

namespace orvanta::dbus {
namespace {

constexpr std::chrono::milliseconds kPatience{40};
constexpr guint32 kGnomeInhibitIdle = 8;
constexpr guint32 kKdeChangeScreenSettings = 4;

constexpr auto kKdePolicyAgent = "kde-policy-agent";
constexpr auto kPowerManagement = "power-management";

bool saysYes(const Reply& reply) {
  return argument<bool>(reply);
}

// a(ssssuu): what, who, why, mode, uid, pid. `what` is a list with colons.
bool logindBlocksIdle(const Reply& reply) {
  using Inhibitor =
      std::tuple<Glib::ustring, Glib::ustring, Glib::ustring, Glib::ustring, guint32, guint32>;
  const auto inhibitors = argument<std::vector<Inhibitor>>(reply);
  return std::any_of(inhibitors.begin(), inhibitors.end(), [](const Inhibitor& inhibitor) {
    const auto what = ":" + std::get<0>(inhibitor).raw() + ":";
    return what.find(":idle:") != std::string::npos && std::get<3>(inhibitor) == "block";
  });
}

}  // namespace

Inhibitors::Inhibitors(const Bus& system, const Bus& session) {
  constexpr auto kGnome = "org.gnome.SessionManager";
  constexpr auto kKde = "org.kde.Solid.PowerManagement.PolicyAgent";
  add({"logind", "systemd-logind"}, system,
      {"org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager"},
      "ListInhibitors", {}, logindBlocksIdle);
  add({"gnome-session", "GNOME"}, session, {kGnome, "/org/gnome/SessionManager", kGnome},
      "IsInhibited", arguments(kGnomeInhibitIdle), saysYes);
  add({kKdePolicyAgent, "KDE Plasma"}, session,
      {kKde, "/org/kde/Solid/PowerManagement/PolicyAgent", kKde}, "HasInhibition",
      arguments(kKdeChangeScreenSettings), saysYes);
  add({kPowerManagement, "gestion de l’énergie"}, session,
      {"org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit",
       "org.freedesktop.PowerManagement.Inhibit"},
      "HasInhibit", {}, saysYes);
}

// What is still under way ends as cancelled, in our context: it is let in, so that nothing of it is
// left behind.
Inhibitors::~Inhibitors() {
  questions_.clear();
  while (context_->iteration(false)) {
  }
}

Source Inhibitors::source() {
  std::vector<Source> sources;
  for (const auto& question : questions_) {
    if (present(question)) sources.push_back(question.source);
  }
  return joinSources(sources);
}

bool Inhibitors::displayKeptAwake() {
  // What came after an earlier question was given up on is old by now: let it in, and ask again.
  while (context_->iteration(false)) {
  }
  context_->push_thread_default();
  for (auto& question : questions_) {
    if (question.waiting) continue;
    if (present(question)) {
      ask(question);
    } else {
      question.answer = false;
    }
  }
  context_->pop_thread_default();

  bool late = false;
  const auto alarm = Glib::TimeoutSource::create(kPatience.count());
  alarm->connect([&late] {
    late = true;
    return false;
  });
  alarm->attach(context_);
  const auto awaited = [](const Question& question) { return question.waiting && !question.late; };
  while (!late && std::any_of(questions_.begin(), questions_.end(), awaited)) {
    context_->iteration(true);
  }
  alarm->destroy();
  bool inhibited = false;
  for (auto& question : questions_) {
    question.late = question.waiting;
    inhibited = inhibited || question.answer;
  }
  return inhibited;
}

void Inhibitors::add(Source source, const Bus& bus, const Place& place, const char* method,
                     const Reply& arguments, std::function<bool(const Reply&)> inhibited) {
  if (!bus) return;
  auto watched = std::make_unique<Service>(bus, place.service);
  watched->watch();
  questions_.push_back({std::move(source), std::move(watched), std::make_unique<Conversation>(bus),
                        place, method, arguments, std::move(inhibited)});
}

// KDE's answers for freedesktop.org's, too, but says yes to what keeps only the machine awake.
bool Inhibitors::present(const Question& question) const {
  const auto there = [](const Question& each) { return each.service->present(); };
  if (question.source.id != kPowerManagement) return there(question);
  return there(question) &&
         std::none_of(questions_.begin(), questions_.end(), [&](const auto& each) {
           return each.source.id == kKdePolicyAgent && there(each);
         });
}

void Inhibitors::ask(Question& question) {
  question.waiting = true;
  question.talk->call(
      question.place, question.method, question.arguments,
      [&question](const Reply& reply) {
        question.waiting = false;
        question.answer = question.inhibited(reply);
      },
      [&question] { question.waiting = question.answer = false; });
}

}  // namespace orvanta::dbus
