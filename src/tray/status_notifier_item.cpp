#include "tray/status_notifier_item.h"

#include <giomm/asyncresult.h>
#include <giomm/dbusintrospection.h>
#include <giomm/dbusmethodinvocation.h>
#include <giomm/dbuswatchname.h>

#include <chrono>
#include <cstdint>
#include <tuple>
#include <utility>
#include <vector>

namespace orvanta::tray {
namespace {

constexpr auto kItemPath = "/StatusNotifierItem";
constexpr auto kItemInterface = "org.kde.StatusNotifierItem";
constexpr auto kWatcher = "org.kde.StatusNotifierWatcher";
constexpr auto kWatcherPath = "/StatusNotifierWatcher";
constexpr auto kProperties = "org.freedesktop.DBus.Properties";
constexpr int kPatienceMilliseconds = 10000;
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

Glib::Variant<Glib::ustring> text(const std::string& value) {
  return Glib::Variant<Glib::ustring>::create(value);
}

// Icon name, icon, title, text.
Glib::VariantBase toolTip(const std::string& title, const std::string& line) {
  using Pixmap = std::tuple<gint32, gint32, std::vector<guint8>>;
  using ToolTip = std::tuple<Glib::ustring, std::vector<Pixmap>, Glib::ustring, Glib::ustring>;
  return Glib::Variant<ToolTip>::create({"", {}, title, line});
}

}  // namespace

StatusNotifierItem::StatusNotifierItem(Glib::RefPtr<Gio::DBus::Connection> session,
                                       Identity identity, Appearance appearance,
                                       std::function<void()> activated)
    : session_(std::move(session)),
      identity_(std::move(identity)),
      appearance_(std::move(appearance)),
      activated_(std::move(activated)),
      vtable_(
          [this](const auto&, const auto&, const auto&, const auto&, const Glib::ustring& method,
                 const Reply& arguments,
                 const Glib::RefPtr<Gio::DBus::MethodInvocation>& invocation) {
            invocation->return_value({});
            called(method, arguments);
          },
          [this](Glib::VariantBase& value, const auto&, const auto&, const auto&, const auto&,
                 const Glib::ustring& name) { property(value, name); }) {
  exportObject();
  watchId_ = Gio::DBus::watch_name(
      session_, kWatcher,
      [this](const auto&, const auto&, const Glib::ustring& owner) {
        watcher_ = owner;
        registerItem();
      },
      [this](const auto&, const auto&) { watcherVanished(); });
  hostSubscription_ = session_->signal_subscribe(
      [this](const auto&, const auto&, const auto&, const auto&, const auto&, const auto&) {
        if (registered_) askForHost();
      },
      kWatcher, kWatcher, {}, kWatcherPath);
}

StatusNotifierItem::~StatusNotifierItem() {
  cancel_->cancel();
  session_->signal_unsubscribe(hostSubscription_);
  Gio::DBus::unwatch_name(watchId_);
  if (objectId_ != 0) session_->unregister_object(objectId_);
}

void StatusNotifierItem::exportObject() {
  try {
    const auto node = Gio::DBus::NodeInfo::create_for_xml(kInterfaceXml);
    objectId_ =
        session_->register_object(kItemPath, node->lookup_interface(kItemInterface), vtable_);
  } catch (const Glib::Error&) {
    // The connection has just closed: there is no panel either.
  }
}

void StatusNotifierItem::called(const Glib::ustring& method, const Reply& arguments) {
  if (method == "ProvideXdgActivationToken") {  // comes before the click itself
    Glib::Variant<Glib::ustring> token;
    arguments.get_child(token, 0);
    activationToken_ = token.get();
  } else if (method == "Activate") {
    activated_();
  }
}

void StatusNotifierItem::property(Glib::VariantBase& value, const Glib::ustring& name) const {
  if (name == "Category") {
    value = text("ApplicationStatus");
  } else if (name == "Id") {
    value = text(identity_.id);
  } else if (name == "Title") {
    value = text(identity_.title);
  } else if (name == "Status") {
    value = text("Active");
  } else if (name == "WindowId") {
    value = Glib::Variant<gint32>::create(0);
  } else if (name == "IconName") {
    value = text(appearance_.iconName);
  } else if (name == "IconAccessibleDesc") {
    value = text(appearance_.iconDescription);
  } else if (name == "IconThemePath") {
    value = text(identity_.iconThemePath);
  } else if (name == "ToolTip") {
    value = toolTip(identity_.title, appearance_.toolTip);
  } else if (name == "ItemIsMenu") {
    value = Glib::Variant<bool>::create(false);
  } else if (name == "Menu") {
    value = Glib::Variant<Glib::DBusObjectPathString>::create(identity_.menuPath);
  } else if (name == "XAyatanaLabel") {
    value = text(appearance_.label);
  } else if (name == "XAyatanaLabelGuide") {
    value = text(identity_.labelGuide);
  }
}

void StatusNotifierItem::show(const Appearance& appearance) {
  const auto before = std::exchange(appearance_, appearance);
  if (before.iconName != appearance.iconName) emit("NewIcon");
  if (before.toolTip != appearance.toolTip) emit("NewToolTip");
  if (before.label != appearance.label) {
    emit("XAyatanaNewLabel",
         Reply::create_tuple({text(appearance.label), text(identity_.labelGuide)}));
  }
}

void StatusNotifierItem::emit(const char* signal, const Reply& arguments) {
  if (!registered_) return;  // whoever comes will ask for everything
  try {
    session_->emit_signal(kItemPath, kItemInterface, signal, {}, arguments);
  } catch (const Glib::Error&) {
    // The bus is gone, and the panel with it.
  }
}

// `then` gets null for a failure. It is not called once the watcher has vanished.
void StatusNotifierItem::call(const char* interface, const char* method, const Reply& arguments,
                              const std::function<void(const Reply*)>& then) {
  session_->call(
      kWatcherPath, interface, method, arguments,
      [session = session_, cancel = cancel_, then](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          const auto reply = session->call_finish(result);
          then(&reply);
        } catch (const Glib::Error&) {
          if (!cancel->is_cancelled()) then(nullptr);
        }
      },
      cancel_, watcher_, kPatienceMilliseconds);
}

// By path: the watcher then takes the connection that the call came from, and no name need be
// owned.
void StatusNotifierItem::registerItem() {
  call(kWatcher, "RegisterStatusNotifierItem", Reply::create_tuple(text(kItemPath)),
       [this](const Reply* reply) {
         if (reply) {
           setShown(true, hosted_);
           return askForHost();
         }
         // A panel that is busy starting, or has no room.
         mainThread_.after(kRetry, [this, watcher = watcher_] {
           if (!registered_ && watcher == watcher_ && !watcher_.empty()) registerItem();
         });
       });
}

// A watcher may be there without any panel to show what it knows.
void StatusNotifierItem::askForHost() {
  call(kProperties, "Get",
       Reply::create_tuple({text(kWatcher), text("IsStatusNotifierHostRegistered")}),
       [this](const Reply* reply) {
         bool hosted = true;  // unless it is known otherwise
         if (reply && reply->is_of_type(Glib::VariantType("(v)"))) {
           Glib::Variant<Glib::VariantBase> value;
           reply->get_child(value, 0);
           const auto answer = value.get();
           if (answer.is_of_type(Glib::VARIANT_TYPE_BOOL)) {
             hosted = Glib::VariantBase::cast_dynamic<Glib::Variant<bool>>(answer).get();
           }
         }
         setShown(true, hosted);
       });
}

void StatusNotifierItem::watcherVanished() {
  watcher_.clear();
  cancel_->cancel();
  cancel_ = Gio::Cancellable::create();
  setShown(false, false);
}

void StatusNotifierItem::setShown(bool registered, bool hosted) {
  const bool before = shown();
  registered_ = registered;
  hosted_ = hosted;
  if (shown() != before && shownChanged_) shownChanged_();
}

}  // namespace orvanta::tray
