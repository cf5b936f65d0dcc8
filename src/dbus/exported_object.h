// An object of ours on a message bus.
#pragma once

#include <giomm/dbusinterfacevtable.h>

#include <functional>
#include <string>

#include "dbus/bus.h"

namespace orvanta::dbus {

/// Is there for as long as this lives. Main thread only.
class ExportedObject {
 public:
  /// Answers a call, whose arguments are of the types described: by nothing, or by the
  /// Gio::DBus::Error that it throws.
  using Called = std::function<void(const std::string& sender, const std::string& method,
                                    const Reply& arguments)>;
  /// The value of a property of the type described.
  using Property = std::function<Glib::VariantBase(const std::string& name)>;

  /// `description` is the introspection data of the interface. A bus that has just closed takes no
  /// object: then nobody ever calls.
  ExportedObject(Bus bus, std::string path, std::string interface, const char* description,
                 Called called, Property property = {});
  ~ExportedObject();
  ExportedObject(const ExportedObject&) = delete;
  ExportedObject& operator=(const ExportedObject&) = delete;

  /// Sends a signal to everybody.
  void emit(const std::string& signal, const Reply& arguments = {});

 private:
  const Bus bus_;
  const std::string path_;
  const std::string interface_;
  const Gio::DBus::InterfaceVTable table_;
  guint id_ = 0;
};

}  // namespace orvanta::dbus
