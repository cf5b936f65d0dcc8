#include "platform/wayland/connection.h"

#include <wayland-client.h>

#include <algorithm>
#include <utility>

namespace orvanta::wayland {
namespace {

constexpr unsigned kReconnectSeconds = 2;

}  // namespace

void* bind(const Global& global, const wl_interface* interface, uint32_t highestVersion) {
  return wl_registry_bind(global.registry, global.name, interface,
                          std::min(global.version, highestVersion));
}

Connection::Connection(Log log)
    : log_(std::move(log)),
      display_(nullptr, wl_display_disconnect),
      registry_(nullptr, wl_registry_destroy) {
  connect();
}

Connection::~Connection() {
  retry_.disconnect();
  disconnect();
}

void Connection::add(Client& client) {
  clients_.push_back(&client);
}

void Connection::remove(Client& client) {
  clients_.erase(std::remove(clients_.begin(), clients_.end(), &client), clients_.end());
}

void Connection::flush() {
  if (display_) wl_display_flush(display_.get());
}

void Connection::connect() {
  display_.reset(wl_display_connect(nullptr));
  if (!display_) {
    if (!std::exchange(told_, true)) {
      log_("Orvanta: compositeur Wayland injoignable, la fenêtre active est inconnue");
    }
    retry_ = Glib::signal_timeout().connect_seconds(
        [this] {
          connect();
          return false;
        },
        kReconnectSeconds);
    return;
  }
  told_ = false;
  static constexpr wl_registry_listener kListener{.global = global, .global_remove = globalRemove};
  registry_.reset(wl_display_get_registry(display_.get()));
  wl_registry_add_listener(registry_.get(), &kListener, this);
  readable_ = Glib::signal_io().connect(
      sigc::mem_fun(*this, &Connection::readEvents), wl_display_get_fd(display_.get()),
      Glib::IOCondition::IO_IN | Glib::IOCondition::IO_HUP | Glib::IOCondition::IO_ERR);
  flush();
}

void Connection::disconnect() {
  readable_.disconnect();
  for (auto* client : clients_) client->lost();
  registry_.reset();
  display_.reset();
}

// Nobody else reads from this display, and the main loop has seen that there is something: the
// dispatch does not wait.
bool Connection::readEvents(Glib::IOCondition /*condition*/) {
  if (wl_display_dispatch(display_.get()) >= 0) {
    flush();
    return true;
  }
  disconnect();
  retry_ = Glib::signal_timeout().connect_seconds(
      [this] {
        connect();
        return false;
      },
      kReconnectSeconds);
  return false;
}

void Connection::global(void* self, wl_registry* registry, uint32_t name, const char* interface,
                        uint32_t version) {
  for (auto* client : static_cast<Connection*>(self)->clients_) {
    client->offered({registry, name, interface, version});
  }
}

void Connection::globalRemove(void* self, wl_registry* /*registry*/, uint32_t name) {
  for (auto* client : static_cast<Connection*>(self)->clients_) client->withdrawn(name);
}

Membership::Membership(std::shared_ptr<Connection> connection, Client& client)
    : connection_(std::move(connection)), client_(client) {
  connection_->add(client_);
}

Membership::~Membership() {
  connection_->remove(client_);
}

}  // namespace orvanta::wayland
