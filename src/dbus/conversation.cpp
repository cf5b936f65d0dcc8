#include "dbus/conversation.h"

#include <giomm/asyncresult.h>
#include <giomm/unixfdlist.h>

#include <utility>

namespace orvanta::dbus {

Conversation::Conversation(Bus bus, Start start, std::chrono::milliseconds patience)
    : bus_(std::move(bus)), start_(start), patience_(patience) {}

Conversation::~Conversation() {
  cancel_->cancel();
  for (const auto subscription : subscriptions_) bus_->signal_unsubscribe(subscription);
}

void Conversation::call(const Place& whom, const std::string& method, const Reply& arguments,
                        std::function<void(const Reply&)> then, std::function<void()> otherwise) {
  send(
      whom, method, arguments,
      [then = std::move(then)](const Reply& reply, const Files& /*files*/) {
        if (then) then(reply);
      },
      std::move(otherwise));
}

void Conversation::callForFile(const Place& whom, const std::string& method, const Reply& arguments,
                               std::function<void(OwnedFd)> then) {
  send(whom, method, arguments,
       [then = std::move(then)](const Reply& /*reply*/, const Files& files) {
         if (files) then(OwnedFd(files->get(0)));
       },
       {});
}

void Conversation::send(const Place& whom, const std::string& method, const Reply& arguments,
                        std::function<void(const Reply&, const Files&)> then,
                        std::function<void()> otherwise) {
  if (!bus_) {
    if (otherwise) otherwise();
    return;
  }
  bus_->call(
      whom.path, whom.interface, method, arguments,
      [bus = bus_, cancel = cancel_, then = std::move(then),
       otherwise = std::move(otherwise)](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          Files files;
          const auto reply = bus->call_finish(result, files);
          if (!cancel->is_cancelled()) then(reply, files);
        } catch (const std::exception&) {
          if (otherwise && !cancel->is_cancelled()) otherwise();
        }
      },
      cancel_, Files(), whom.service, static_cast<int>(patience_.count()),
      start_ == Start::Yes ? Gio::DBus::CallFlags::NONE : Gio::DBus::CallFlags::NO_AUTO_START);
}

void Conversation::onSignal(const Place& from, const std::string& name,
                            std::function<void(const Signal&)> then, const std::string& about) {
  if (!bus_) return;
  subscriptions_.push_back(bus_->signal_subscribe(
      [then = std::move(then)](const auto&, const Glib::ustring& sender, const Glib::ustring& path,
                               const auto&, const Glib::ustring& name, const Reply& arguments) {
        try {
          then({sender, path, name, arguments});
        } catch (const std::exception&) {
          // Of another form than its interface has.
        }
      },
      from.service, from.interface, name, from.path, about));
}

void Conversation::forgetQuestions() {
  cancel_->cancel();
  cancel_ = Gio::Cancellable::create();
}

}  // namespace orvanta::dbus
