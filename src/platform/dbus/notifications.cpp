#include "platform/dbus/notifications.h"

#include <glibmm/markup.h>

#include <algorithm>

#include "base/application_id.h"

namespace orvanta::dbus {
namespace {

const Place kServer{"org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                    "org.freedesktop.Notifications"};

using Hints = std::map<Glib::ustring, Glib::VariantBase>;
using Words = std::vector<Glib::ustring>;

bool holds(const Words& words, const char* word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

}  // namespace

Notifications::Notifications(const Bus& session)
    : conversation_(session, Conversation::Start::Yes) {
  conversation_.onSignal(kServer, "ActivationToken", [this](const Signal& signal) {
    const auto note = shown_.find(argument<uint32_t>(signal.arguments));
    if (note != shown_.end()) note->second.token = argument<std::string>(signal.arguments, 1);
  });
  conversation_.onSignal(kServer, "ActionInvoked", [this](const Signal& signal) {
    auto note = shown_.extract(argument<uint32_t>(signal.arguments));
    const auto action = argument<std::string>(signal.arguments, 1);
    if (note) note.mapped().answered(action, note.mapped().token);
  });
  // Another server counts from the start.
  conversation_.onSignal(
      {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"}, "NameOwnerChanged",
      [this](const Signal& /*of*/) { shown_.clear(); }, kServer.service);
  conversation_.onSignal(kServer, "NotificationClosed", [this](const Signal& signal) {
    shown_.erase(argument<uint32_t>(signal.arguments));
  });
}

void Notifications::show(Note note, Answered answered, Plain plain) {
  conversation_.call(kServer, "GetCapabilities", {},
                     [this, note = std::move(note), answered = std::move(answered),
                      plain = std::move(plain)](const Reply& reply) {
                       const auto abilities = argument<Words>(reply);
                       if (holds(abilities, "actions")) {
                         send(note, holds(abilities, "body-markup"), answered);
                       } else {
                         plain(note.summary + ". " + note.body);
                       }
                     });
}

void Notifications::send(const Note& note, bool markup, const Answered& answered) {
  uint32_t replaced = 0;
  for (const auto& [number, shown] : shown_) {
    if (shown.slot == note.slot) replaced = number;
  }
  Words actions{"default", "Ouvrir Orvanta"};
  for (const auto& [key, label] : note.actions) {
    actions.emplace_back(key);
    actions.emplace_back(label);
  }
  // Of low urgency, GNOME would not show it but in its list.
  const Hints hints{{"urgency", Glib::Variant<unsigned char>::create(1)},
                    {"suppress-sound", Glib::Variant<bool>::create(true)},
                    {"desktop-entry", toValue(kApplicationId)}};
  const Glib::ustring body =
      markup ? Glib::Markup::escape_text(note.body) : Glib::ustring(note.body);
  conversation_.call(kServer, "Notify",
                     arguments(std::string("Orvanta"), replaced, std::string(kApplicationId),
                               note.summary, body.raw(), actions, hints, int32_t{-1}),
                     [this, slot = note.slot, answered](const Reply& reply) {
                       std::erase_if(shown_,
                                     [&](const auto& each) { return each.second.slot == slot; });
                       shown_[argument<uint32_t>(reply)] = {slot, answered, {}};
                     });
}

}  // namespace orvanta::dbus
