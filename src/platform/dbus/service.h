// A service on a message bus that may come, go and hang.
#pragma once

#include <giomm/cancellable.h>
#include <giomm/dbusconnection.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace orvanta::dbus {

using Bus = Glib::RefPtr<Gio::DBus::Connection>;
using Reply = Glib::VariantContainerBase;

/// Watches a well-known name and talks to its owner, never waiting for it: answers and signals come
/// in the main loop, and none comes once the object is destroyed. Made and used on the main thread;
/// only present() may be called from any thread.
class Service {
 public:
  /// `bus` may be null: then the service is never there.
  Service(Bus bus, std::string name);
  ~Service();
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  /// Begins to watch. `appeared` is called when the service is there or there again, `vanished`
  /// when it has gone, each time.
  void watch(std::function<void()> appeared = {}, std::function<void()> vanished = {});

  bool present() const { return present_; }
  const std::string& name() const { return name_; }
  /// The unique name of the service on the bus; "" when it is not there.
  const std::string& owner() const { return owner_; }

  /// Calls a method without starting the service for it. `then` gets the answer; `otherwise` is for
  /// everything else: no service, no answer in 5 s, an error, an answer of another form.
  void call(const std::string& path, const std::string& interface, const std::string& method,
            const Reply& arguments, std::function<void(const Reply&)> then = {},
            std::function<void()> otherwise = {});

  /// Hears a signal of the service, and of nobody else.
  void onSignal(const std::string& path, const std::string& interface, const std::string& signal,
                std::function<void(const Reply& arguments)> then);

 private:
  Bus bus_;
  std::string name_;
  std::string owner_;
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
  std::vector<guint> subscriptions_;
  guint watch_ = 0;
  std::atomic<bool> present_ = false;
};

/// The arguments of a call.
template <class... Values>
Reply arguments(const Values&... values) {
  return Reply::create_tuple(
      std::vector<Glib::VariantBase>{Glib::Variant<Values>::create(values)...});
}

/// Argument number `index` of an answer or a signal. Throws std::bad_cast or std::out_of_range when
/// there is none of this type.
template <class Value>
Value argument(const Reply& reply, std::size_t index = 0) {
  Glib::VariantBase child;
  reply.get_child(child, index);
  return Glib::VariantBase::cast_dynamic<Glib::Variant<Value>>(child).get();
}

}  // namespace orvanta::dbus
