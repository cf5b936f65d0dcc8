// The least that a resident program on the same libraries can be: it is on the session bus, has
// registered an icon, and waits. What Orvanta costs is measured against it.
#include <giomm/application.h>
#include <giomm/dbusconnection.h>
#include <glibmm/variant.h>

namespace {

class Empty : public Gio::Application {
 public:
  Empty() : Gio::Application("fr.quellvane.orvanta.empty") {}

 protected:
  void on_activate() override {
    hold();
    get_dbus_connection()->call(
        "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher", "RegisterStatusNotifierItem",
        Glib::VariantContainerBase::create_tuple(
            Glib::Variant<Glib::ustring>::create("/StatusNotifierItem")),
        [](const auto& /*result*/) {}, "org.kde.StatusNotifierWatcher");
  }
};

}  // namespace

int main(int argc, char** argv) {
  return Empty().run(argc, argv);
}
