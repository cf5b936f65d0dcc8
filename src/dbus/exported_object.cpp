#include "dbus/exported_object.h"

#include <giomm/dbuserror.h>
#include <giomm/dbusintrospection.h>
#include <giomm/dbusmethodinvocation.h>

#include <utility>

namespace orvanta::dbus {

ExportedObject::ExportedObject(Bus bus, std::string path, std::string interface,
                               const char* description, Called called, Property property)
    : bus_(std::move(bus)),
      path_(std::move(path)),
      interface_(std::move(interface)),
      table_(
          [called = std::move(called)](const auto&, const Glib::ustring& sender, const auto&,
                                       const auto&, const Glib::ustring& method,
                                       const Reply& arguments,
                                       const Glib::RefPtr<Gio::DBus::MethodInvocation>& call) {
            try {
              called(sender, method, arguments);
              call->return_value({});
            } catch (const Gio::DBus::Error& error) {
              call->return_error(error);
            }
          },
          [property = std::move(property)](Glib::VariantBase& value, const auto&, const auto&,
                                           const auto&, const auto&, const Glib::ustring& name) {
            if (property) value = property(name);
          }) {
  try {
    const auto node = Gio::DBus::NodeInfo::create_for_xml(description);
    id_ = bus_->register_object(path_, node->lookup_interface(interface_), table_);
  } catch (const Glib::Error&) {
    // The connection has just closed.
  }
}

ExportedObject::~ExportedObject() {
  if (id_ != 0) bus_->unregister_object(id_);
}

void ExportedObject::emit(const std::string& signal, const Reply& arguments) {
  try {
    bus_->emit_signal(path_, interface_, signal, {}, arguments);
  } catch (const Glib::Error&) {
    // The bus is gone, and whoever listened with it.
  }
}

}  // namespace orvanta::dbus
