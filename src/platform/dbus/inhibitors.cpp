#include "platform/dbus/inhibitors.h"

#include <giomm/asyncresult.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <tuple>
#include <utility>

namespace orvanta::dbus {
namespace {

constexpr std::chrono::milliseconds kPatience{50};
constexpr int kGiveUpMilliseconds = 5000;
constexpr guint32 kGnomeInhibitIdle = 8;
constexpr guint32 kKdeChangeScreenSettings = 4;

using Reply = Glib::VariantContainerBase;

Reply number(guint32 value) {
  return Reply::create_tuple(Glib::Variant<guint32>::create(value));
}

bool boolean(const Reply& reply) {
  Glib::Variant<bool> value;
  reply.get_child(value, 0);
  return value.get();
}

// a(ssssuu): what, who, why, mode, uid, pid. `what` is a list with colons.
bool logindBlocksIdle(const Reply& reply) {
  using Inhibitor =
      std::tuple<Glib::ustring, Glib::ustring, Glib::ustring, Glib::ustring, guint32, guint32>;
  Glib::Variant<std::vector<Inhibitor>> list;
  reply.get_child(list, 0);
  const auto inhibitors = list.get();
  return std::any_of(inhibitors.begin(), inhibitors.end(), [](const Inhibitor& inhibitor) {
    const auto what = ":" + std::get<0>(inhibitor).raw() + ":";
    return what.find(":idle:") != std::string::npos && std::get<3>(inhibitor) == "block";
  });
}

}  // namespace

Inhibitors::Inhibitors(const Glib::RefPtr<Gio::DBus::Connection>& system,
                       const Glib::RefPtr<Gio::DBus::Connection>& session) {
  if (system) {
    questions_.push_back({system, "org.freedesktop.login1", "/org/freedesktop/login1",
                          "org.freedesktop.login1.Manager", "ListInhibitors", Reply(),
                          logindBlocksIdle});
  }
  if (session) {
    questions_.push_back({session, "org.gnome.SessionManager", "/org/gnome/SessionManager",
                          "org.gnome.SessionManager", "IsInhibited", number(kGnomeInhibitIdle),
                          boolean});
    questions_.push_back({session, "org.kde.Solid.PowerManagement.PolicyAgent",
                          "/org/kde/Solid/PowerManagement/PolicyAgent",
                          "org.kde.Solid.PowerManagement.PolicyAgent", "HasInhibition",
                          number(kKdeChangeScreenSettings), boolean});
  }
}

Inhibitors::~Inhibitors() {
  // What is still under way answers "cancelled" into our context, while we are still here.
  cancel_->cancel();
  while (std::any_of(questions_.begin(), questions_.end(),
                     [](const Question& question) { return question.waiting; })) {
    context_->iteration(true);
  }
}

bool Inhibitors::displayKeptAwake() {
  // What came after an earlier question was given up on is old by now: let it in, and ask again.
  while (context_->iteration(false)) {
  }
  context_->push_thread_default();
  for (auto& question : questions_) {
    if (!question.waiting) ask(question);
  }
  context_->pop_thread_default();

  bool late = false;
  const auto alarm = Glib::TimeoutSource::create(kPatience.count());
  alarm->connect([&late] {
    late = true;
    return false;
  });
  alarm->attach(context_);
  const auto waiting = [](const Question& question) { return question.waiting; };
  const auto inhibited = [](const Question& question) { return question.answer; };
  do {
    context_->iteration(std::any_of(questions_.begin(), questions_.end(), waiting));
  } while (!late && std::any_of(questions_.begin(), questions_.end(), waiting));
  alarm->destroy();
  return std::any_of(questions_.begin(), questions_.end(), inhibited);
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
      cancel_, question.service, kGiveUpMilliseconds, Gio::DBus::CallFlags::NO_AUTO_START);
}

}  // namespace orvanta::dbus
