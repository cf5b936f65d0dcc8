#include "tray/status_notifier_item.h"

#include <chrono>
#include <map>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace orvanta::tray {
namespace {

constexpr auto kItemPath = "/StatusNotifierItem";
constexpr auto kItemInterface = "org.kde.StatusNotifierItem";
constexpr auto kWatcher = "org.kde.StatusNotifierWatcher";
constexpr auto kWatcherPath = "/StatusNotifierWatcher";
constexpr std::chrono::seconds kPatience{10};
constexpr std::chrono::seconds kRetry{30};

constexpr auto kInterfaceXml = R"xml(<node>
  <interface name="org.kde.StatusNotifierItem">
    <property name="Category" type="s" access="read"/>
    <property name="Id" type="s" access="read"/>
    <property name="Title" type="s" access="read"/>
    <property name="Status" type="s" access="read"/>
    <property name="WindowId" type="i" access="read"/>
    <property name="IconName" type="s" access="read"/>
    <property name="IconAccessibleDesc" type="s" access="read"/>
    <property name="IconThemePath" type="s" access="read"/>
    <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
    <property name="ItemIsMenu" type="b" access="read"/>
    <property name="Menu" type="o" access="read"/>
    <property name="XAyatanaLabel" type="s" access="read"/>
    <property name="XAyatanaLabelGuide" type="s" access="read"/>
    <method name="Activate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
    <method name="SecondaryActivate">
      <arg type="i" direction="in"/><arg type="i" direction="in"/>
    </method>
    <method name="ContextMenu"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
    <method name="Scroll"><arg type="i" direction="in"/><arg type="s" direction="in"/></method>
    <method name="ProvideXdgActivationToken"><arg type="s" direction="in"/></method>
    <signal name="NewIcon"/>
    <signal name="NewToolTip"/>
    <signal name="XAyatanaNewLabel"><arg type="s"/><arg type="s"/></signal>
  </interface>
</node>)xml";

// Icon name, icon, title, text.
Glib::VariantBase toolTip(const std::string& title, const std::string& line) {
  using Pixmap = std::tuple<gint32, gint32, std::vector<guint8>>;
  using ToolTip = std::tuple<Glib::ustring, std::vector<Pixmap>, Glib::ustring, Glib::ustring>;
  return Glib::Variant<ToolTip>::create({"", {}, title, line});
}

}  // namespace

StatusNotifierItem::StatusNotifierItem(const dbus::Bus& session, Identity identity,
                                       Appearance appearance, std::function<void()> activated)
    : identity_(std::move(identity)),
      appearance_(std::move(appearance)),
      activated_(std::move(activated)),
      object_(
          session, kItemPath, kItemInterface, kInterfaceXml,
          [this](const auto& /*sender*/, const auto& method, const auto& arguments) {
            called(method, arguments);
          },
          [this](const auto& name) { return property(name); }),
      watcher_(session, kWatcher, kPatience) {
  watcher_.onSignal(kWatcherPath, kWatcher, "", [this](const auto& /*arguments*/) {
    if (registered_) askForHost();
  });
  watcher_.watch([this] { registerItem(); }, [this] { setShown(false, false); });
}

void StatusNotifierItem::called(const std::string& method, const dbus::Reply& arguments) {
  if (method == "ProvideXdgActivationToken") {  // comes before the click itself
    activationToken_ = dbus::argument<std::string>(arguments);
  } else if (method == "Activate") {
    activated_();
  }
}

Glib::VariantBase StatusNotifierItem::property(const std::string& name) const {
  using dbus::toValue;
  const std::map<std::string_view, Glib::VariantBase> all{
      {"Category", toValue("ApplicationStatus")},
      {"Id", toValue(identity_.id)},
      {"Title", toValue(identity_.title)},
      {"Status", toValue("Active")},
      {"WindowId", toValue(gint32{0})},
      {"IconName", toValue(appearance_.iconName)},
      {"IconAccessibleDesc", toValue(appearance_.iconDescription)},
      {"IconThemePath", toValue(identity_.iconThemePath)},
      {"ToolTip", toolTip(identity_.title, appearance_.toolTip)},
      {"ItemIsMenu", toValue(false)},
      {"Menu", toValue(Glib::DBusObjectPathString(identity_.menuPath))},
      {"XAyatanaLabel", toValue(appearance_.label)},
      {"XAyatanaLabelGuide", toValue(identity_.labelGuide)}};
  return all.at(name);
}

void StatusNotifierItem::show(const Appearance& appearance) {
  const auto before = std::exchange(appearance_, appearance);
  if (before.iconName != appearance.iconName) emit("NewIcon");
  if (before.toolTip != appearance.toolTip) emit("NewToolTip");
  if (before.label != appearance.label) {
    emit("XAyatanaNewLabel", dbus::arguments(appearance.label, identity_.labelGuide));
  }
}

void StatusNotifierItem::emit(const char* signal, const dbus::Reply& arguments) {
  if (registered_) object_.emit(signal, arguments);  // whoever comes will ask for everything
}

// By path: the watcher then takes the connection that the call came from, and no name need be
// owned.
void StatusNotifierItem::registerItem() {
  watcher_.call(
      kWatcherPath, kWatcher, "RegisterStatusNotifierItem", dbus::arguments(kItemPath),
      [this](const auto& /*nothing*/) {
        setShown(true, hosted_);
        askForHost();
      },
      // A panel that is busy starting, or has no room.
      [this] {
        mainThread_.after(kRetry, [this, owner = watcher_.owner()] {
          if (!registered_ && watcher_.present() && owner == watcher_.owner()) registerItem();
        });
      });
}

// A watcher may be there without any panel to show what it knows; one that does not say has one.
void StatusNotifierItem::askForHost() {
  watcher_.read<bool>(
      kWatcherPath, kWatcher, "IsStatusNotifierHostRegistered",
      [this](bool hosted) { setShown(true, hosted); }, [this] { setShown(true, true); });
}

void StatusNotifierItem::setShown(bool registered, bool hosted) {
  const bool before = shown();
  registered_ = registered;
  hosted_ = hosted;
  if (shown() != before && shownChanged_) shownChanged_();
}

}  // namespace orvanta::tray
