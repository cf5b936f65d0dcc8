#include "platform/dbus/service.h"

#include <giomm/asyncresult.h>
#include <giomm/dbuswatchname.h>

#include <utility>

namespace orvanta::dbus {
namespace {

constexpr int kPatienceMilliseconds = 5000;

}  // namespace

Service::Service(Bus bus, std::string name) : bus_(std::move(bus)), name_(std::move(name)) {}

Service::~Service() {
  cancel_->cancel();
  if (watch_ != 0) Gio::DBus::unwatch_name(watch_);
  for (const auto subscription : subscriptions_) bus_->signal_unsubscribe(subscription);
}

void Service::watch(std::function<void()> appeared, std::function<void()> vanished) {
  if (!bus_) return;
  watch_ = Gio::DBus::watch_name(
      bus_, name_,
      [this, appeared = std::move(appeared)](const auto&, const auto&, const auto& owner) {
        owner_ = owner;
        present_ = true;
        if (appeared) appeared();
      },
      [this, vanished = std::move(vanished)](const auto&, const auto&) {
        owner_.clear();
        present_ = false;
        if (vanished) vanished();
      });
}

void Service::call(const std::string& path, const std::string& interface, const std::string& method,
                   const Reply& arguments, std::function<void(const Reply&)> then,
                   std::function<void()> otherwise) {
  if (!bus_) {
    if (otherwise) otherwise();
    return;
  }
  bus_->call(
      path, interface, method, arguments,
      [bus = bus_, cancel = cancel_, then = std::move(then),
       otherwise = std::move(otherwise)](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          const auto reply = bus->call_finish(result);
          if (then && !cancel->is_cancelled()) then(reply);
        } catch (const std::exception&) {
          if (otherwise && !cancel->is_cancelled()) otherwise();
        }
      },
      cancel_, name_, kPatienceMilliseconds, Gio::DBus::CallFlags::NO_AUTO_START);
}

void Service::onSignal(const std::string& path, const std::string& interface,
                       const std::string& signal, std::function<void(const Reply&)> then) {
  if (!bus_) return;
  subscriptions_.push_back(bus_->signal_subscribe(
      [then = std::move(then)](const auto&, const auto&, const auto&, const auto&, const auto&,
                               const Reply& arguments) {
        try {
          then(arguments);
        } catch (const std::exception&) {
          // A signal of another form than its interface has says nothing.
        }
      },
      name_, interface, signal, path));
}

}  // namespace orvanta::dbus
