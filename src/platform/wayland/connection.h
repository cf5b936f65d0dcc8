// The connection to the Wayland compositor.
#pragma once

#include <glibmm/main.h>
#include <sigc++/connection.h>
#include <wayland-client-core.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/log.h"

struct wl_registry;

namespace orvanta::wayland {

/// An object of the compositor, with the request that gives it back.
template <class Object>
using Owned = std::unique_ptr<Object, void (*)(Object*)>;

/// A global object that the compositor offers.
struct Global {
  wl_registry* registry;
  uint32_t name;
  std::string_view interface;
  uint32_t version;
};

/// Binds what it needs of the compositor. All on the main thread.
class Client {
 public:
  virtual ~Client() = default;
  virtual void offered(const Global& global) = 0;
  virtual void withdrawn(uint32_t name) = 0;
  /// The connection ends: every object of it must be given back now.
  virtual void lost() = 0;
};

/// The object of the global in the lower of the two versions.
void* bind(const Global& global, const wl_interface* interface, uint32_t highestVersion);

/// Waits for the compositor's events in the main loop. When the compositor goes away it is looked
/// for again every two seconds. Made and used on the main thread.
class Connection {
 public:
  explicit Connection(Log log = systemLog);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// `client` hears of every global from now on, and removes itself before it ends.
  void add(Client& client);
  void remove(Client& client);

  /// Sends the requests made outside of an event.
  void flush();

 private:
  using Display = std::unique_ptr<wl_display, void (*)(wl_display*)>;
  using Registry = Owned<wl_registry>;

  static void global(void* self, wl_registry* registry, uint32_t name, const char* interface,
                     uint32_t version);
  static void globalRemove(void* self, wl_registry* registry, uint32_t name);

  void connect();
  void disconnect();
  bool readEvents(Glib::IOCondition condition);

  const Log log_;
  std::vector<Client*> clients_;
  Display display_;
  Registry registry_;
  sigc::connection readable_;
  sigc::connection retry_;
  bool told_ = false;
};

/// A client that is with the connection for as long as it lives.
class Membership {
 public:
  Membership(std::shared_ptr<Connection> connection, Client& client);
  ~Membership();
  Membership(const Membership&) = delete;
  Membership& operator=(const Membership&) = delete;

 private:
  std::shared_ptr<Connection> connection_;
  Client& client_;
};

}  // namespace orvanta::wayland
