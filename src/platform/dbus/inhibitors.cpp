#include "platform/dbus/inhibitors.h"

#include <giomm/asyncresult.h>

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
constexpr int kGiveUpMilliseconds = 5000;
constexpr guint32 kGnomeInhibitIdle = 8;
constexpr guint32 kKdeChangeScreenSettings = 4;

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
  add({"logind", "systemd-logind"}, system, "org.freedesktop.login1",
      "org.freedesktop.login1.Manager", "/org/freedesktop/login1", "ListInhibitors", {},
      logindBlocksIdle);
  add({"gnome-session", "GNOME"}, session, "org.gnome.SessionManager", "org.gnome.SessionManager",
      "/org/gnome/SessionManager", "IsInhibited", arguments(kGnomeInhibitIdle), saysYes);
  add({"kde-policy-agent", "KDE Plasma"}, session, "org.kde.Solid.PowerManagement.PolicyAgent",
      "org.kde.Solid.PowerManagement.PolicyAgent", "/org/kde/Solid/PowerManagement/PolicyAgent",
      "HasInhibition", arguments(kKdeChangeScreenSettings), saysYes);
}

Inhibitors::~Inhibitors() {
  // What is still under way answers "cancelled" into our context, while we are still here.
  cancel_->cancel();
  while (std::any_of(questions_.begin(), questions_.end(),
                     [](const Question& question) { return question.waiting; })) {
    context_->iteration(true);
  }
}

Source Inhibitors::source() {
  std::vector<Source> sources;
  for (const auto& question : questions_) {
    if (question.service->present()) sources.push_back(question.source);
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
    if (question.service->present()) {
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

void Inhibitors::add(Source source, const Bus& bus, const char* service, const char* interface,
                     const char* path, const char* method, const Reply& arguments,
                     std::function<bool(const Reply&)> inhibited) {
  if (!bus) return;
  auto watched = std::make_unique<Service>(bus, service);
  watched->watch();
  questions_.push_back({std::move(source), bus, std::move(watched), path, interface, method,
                        arguments, std::move(inhibited)});
}

void Inhibitors::ask(Question& question) {
  question.waiting = true;
  question.bus->call(
      question.path, question.interface, question.method, question.arguments,
      [&question](const Glib::RefPtr<Gio::AsyncResult>& result) {
        question.waiting = false;
        try {
          question.answer = question.inhibited(question.bus->call_finish(result));
        } catch (const std::exception&) {  // no such service, no answer, or another form of answer
          question.answer = false;
        }
      },
      cancel_, question.service->name(), kGiveUpMilliseconds, Gio::DBus::CallFlags::NO_AUTO_START);
}

}  // namespace orvanta::dbus
