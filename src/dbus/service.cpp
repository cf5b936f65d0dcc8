#include "dbus/service.h"

#include <giomm/dbuswatchname.h>

#include <utility>

namespace orvanta::dbus {

Service::Service(Bus bus, std::string name, std::chrono::milliseconds patience)
    : conversation_(std::move(bus), Conversation::Start::No, patience), name_(std::move(name)) {}

Service::~Service() {
  if (watch_ != 0) Gio::DBus::unwatch_name(watch_);
}

void Service::watch(std::function<void()> appeared, std::function<void()> vanished) {
  if (!conversation_.bus()) return;
  watch_ = Gio::DBus::watch_name(
      conversation_.bus(), name_,
      [this, appeared = std::move(appeared)](const auto&, const auto&, const auto& owner) {
        owner_ = owner;
        present_ = true;
        if (appeared) appeared();
      },
      [this, vanished = std::move(vanished)](const auto&, const auto&) {
        if (present_) conversation_.forgetQuestions();
        owner_.clear();
        present_ = false;
        if (vanished) vanished();
      });
}

void Service::call(const std::string& path, const std::string& interface, const std::string& method,
                   const Reply& arguments, std::function<void(const Reply&)> then,
                   std::function<void()> otherwise) {
  conversation_.call({name_, path, interface}, method, arguments, std::move(then),
                     std::move(otherwise));
}

void Service::onSignal(const std::string& path, const std::string& interface,
                       const std::string& signal, std::function<void(const Reply&)> then) {
  conversation_.onSignal({name_, path, interface}, signal,
                         [then = std::move(then)](const Signal& heard) { then(heard.arguments); });
}

}  // namespace orvanta::dbus
