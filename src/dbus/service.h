// A service on a message bus that may come, go and hang.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "dbus/conversation.h"

namespace orvanta::dbus {

/// Watches a well-known name and talks to its owner, never waiting for it: answers and signals come
/// in the main loop, none of an owner that has gone, and none once the object is destroyed. Made
/// and used on the main thread; only present() may be called from any thread.
class Service {
 public:
  /// `bus` may be null: then the service is never there.
  Service(Bus bus, std::string name, std::chrono::milliseconds patience = Conversation::kPatience);
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

  /// Calls a method without starting the service for it; otherwise as Conversation::call().
  void call(const std::string& path, const std::string& interface, const std::string& method,
            const Reply& arguments, std::function<void(const Reply&)> then = {},
            std::function<void()> otherwise = {});

  /// Reads a property, as call().
  template <class Value>
  void read(const std::string& path, const std::string& interface, const std::string& property,
            std::function<void(const Value&)> then, std::function<void()> otherwise = {}) {
    conversation_.read<Value>({name_, path, interface}, property, std::move(then),
                              std::move(otherwise));
  }

  /// Hears a signal of the service, and of nobody else; "" is every signal of the interface.
  void onSignal(const std::string& path, const std::string& interface, const std::string& signal,
                std::function<void(const Reply& arguments)> then);

 private:
  Conversation conversation_;
  const std::string name_;
  std::string owner_;
  guint watch_ = 0;
  std::atomic<bool> present_ = false;
};

}  // namespace orvanta::dbus
