// Calls and signals that end with who wanted them.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "base/owned_fd.h"
#include "dbus/bus.h"

namespace orvanta::dbus {

/// A signal that was heard.
struct Signal {
  std::string sender;  ///< unique name
  std::string path;
  std::string name;
  Reply arguments;
};

/// Talks on a bus without ever waiting: answers and signals come in the main loop, or in the
/// context that was the thread's default when it was asked for them, and none comes once this is
/// destroyed. On one thread at a time.
class Conversation {
 public:
  static constexpr std::chrono::seconds kPatience{5};
  enum class Start { No, Yes };  ///< whether a service that is not there is started for a call

  /// With a `bus` that is null nobody is ever there.
  explicit Conversation(Bus bus, Start start = Start::No,
                        std::chrono::milliseconds patience = kPatience);
  ~Conversation();
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;

  const Bus& bus() const { return bus_; }

  /// Calls a method. `then` gets the answer; `otherwise` is for everything else: no service, no
  /// answer in time, an error, an answer of another form.
  void call(const Place& whom, const std::string& method, const Reply& arguments,
            std::function<void(const Reply&)> then = {}, std::function<void()> otherwise = {});

  /// Calls a method that answers with a file.
  void callForFile(const Place& whom, const std::string& method, const Reply& arguments,
                   std::function<void(OwnedFd)> then);

  /// Reads a property.
  template <class Value>
  void read(const Place& of, const std::string& property, std::function<void(const Value&)> then,
            std::function<void()> otherwise = {}) {
    call(
        {of.service, of.path, "org.freedesktop.DBus.Properties"}, "Get",
        arguments(of.interface, property),
        [then = std::move(then)](const Reply& reply) {
          then(fromValue<Value>(argument<Glib::VariantBase>(reply)));
        },
        std::move(otherwise));
  }

  /// Hears the signals of a name, "" for all; of those whose first argument is `about`, where that
  /// is not empty. One of another form than its interface has says nothing.
  void onSignal(const Place& from, const std::string& name, std::function<void(const Signal&)> then,
                const std::string& about = {});

  /// No answer comes any more to what was asked until now.
  void forgetQuestions();

 private:
  using Files = Glib::RefPtr<Gio::UnixFDList>;
  void send(const Place& whom, const std::string& method, const Reply& arguments,
            std::function<void(const Reply&, const Files&)> then, std::function<void()> otherwise);

  const Bus bus_;
  const Start start_;
  const std::chrono::milliseconds patience_;
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
  std::vector<guint> subscriptions_;
};

}  // namespace orvanta::dbus
