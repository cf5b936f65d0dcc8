#include "dashboard/appearance.h"

#include <gtkmm/settings.h>
#include <webkit/webkit.h>

#include <string>
#include <string_view>
#include <vector>

namespace orvanta {
namespace {

constexpr auto kPortal = "org.freedesktop.portal.Desktop";
constexpr auto kPath = "/org/freedesktop/portal/desktop";
constexpr auto kInterface = "org.freedesktop.portal.Settings";
constexpr auto kNamespace = "org.freedesktop.appearance";
constexpr auto kScheme = "color-scheme";
constexpr auto kContrast = "contrast";
// Of GTK 4.20 on.
constexpr auto kToolkitContrast = "gtk-interface-contrast";

WebKitWebView* webView(Gtk::Widget& page) {
  return WEBKIT_WEB_VIEW(page.gobj());
}

std::optional<guint32> number(Glib::VariantBase value) {
  while (value.get_type_string() == "v") {
    value = Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::VariantBase>>(value).get();
  }
  if (value.get_type_string() != "u") return {};
  return Glib::VariantBase::cast_dynamic<Glib::Variant<guint32>>(value).get();
}

Glib::VariantContainerBase question(const char* key) {
  return Glib::VariantContainerBase::create_tuple(std::vector<Glib::VariantBase>{
      Glib::Variant<Glib::ustring>::create(kNamespace), Glib::Variant<Glib::ustring>::create(key)});
}

bool hasToolkitContrast(const Glib::RefPtr<Gtk::Settings>& settings) {
  return g_object_class_find_property(G_OBJECT_GET_CLASS(settings->gobj()), kToolkitContrast) !=
         nullptr;
}

bool themeSays(const Glib::RefPtr<Gtk::Settings>& settings, const char* word) {
  const std::string name = settings->property_gtk_theme_name().get_value();
  return name.find(word) != std::string::npos;
}

}  // namespace

Appearance::Appearance(Gtk::Widget& page)
    : page_(page),
      settings_(Gtk::Settings::get_default()),
      darkBefore_(settings_->property_gtk_application_prefer_dark_theme()) {
  themeChanged_ = settings_->property_gtk_theme_name().signal_changed().connect([this] {
    applyScheme();
    markContrast();
  });
  const auto mark = +[](Appearance* self) { self->markContrast(); };
  if (hasToolkitContrast(settings_)) {
    contrastChanged_ = g_signal_connect_swapped(settings_->gobj(), "notify::gtk-interface-contrast",
                                                G_CALLBACK(mark), this);
  }
  // Every page that is loaded begins without the mark.
  loaded_ = g_signal_connect_swapped(webView(page_), "load-changed", G_CALLBACK(mark), this);
  applyScheme();
  readAtOnce(kScheme);
  Gio::DBus::Proxy::create_for_bus(Gio::DBus::BusType::SESSION, kPortal, kPath, kInterface,
                                   [this](const Glib::RefPtr<Gio::AsyncResult>& result) {
                                     try {
                                       portal_ = Gio::DBus::Proxy::create_for_bus_finish(result);
                                     } catch (const Glib::Error&) {
                                       return;
                                     }
                                     follow();
                                   });
}

Appearance::~Appearance() {
  themeChanged_.disconnect();
  if (contrastChanged_ != 0) g_signal_handler_disconnect(settings_->gobj(), contrastChanged_);
  g_signal_handler_disconnect(webView(page_), loaded_);
}

void Appearance::follow() {
  portal_->signal_signal().connect([this](const Glib::ustring& /*sender*/,
                                          const Glib::ustring& signal,
                                          Glib::VariantContainerBase arguments) {
    if (signal != "SettingChanged" || arguments.get_type_string() != "(ssv)") return;
    const auto text = [&](gsize i) {
      return Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(arguments.get_child(i))
          .get();
    };
    if (text(0) == kNamespace) apply(text(1), arguments.get_child(2));
  });
  read(kScheme);
  read(kContrast);
}

// So that the window is not light for its first moment. A portal that is up answers at once; one
// that is not is neither started for this nor waited for.
void Appearance::readAtOnce(const char* key) {
  constexpr int kMoment = 100;  // ms
  try {
    const auto bus = Gio::DBus::Connection::get_sync(Gio::DBus::BusType::SESSION);
    auto answer = bus->call_sync(kPath, kInterface, "Read", question(key), kPortal, kMoment,
                                 Gio::DBus::CallFlags::NO_AUTO_START);
    apply(key, answer.get_child(0));
  } catch (const Glib::Error&) {
  }
}

void Appearance::read(const char* key) {
  portal_->call(
      "Read",
      [this, key](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          apply(key, portal_->call_finish(result).get_child(0));
        } catch (const Glib::Error&) {
        }
      },
      question(key));
}

void Appearance::apply(const Glib::ustring& key, const Glib::VariantBase& wrapped) {
  const auto value = number(wrapped);
  if (!value) return;
  if (key == kScheme) {
    portalDark_ = *value == 1;
    applyScheme();
  } else if (key == kContrast) {
    portalContrast_ = *value == 1;
    markContrast();
  }
}

// The web engine takes the high contrast theme for a light one, be it inverse or not.
void Appearance::applyScheme() {
  settings_->property_gtk_application_prefer_dark_theme() =
      themeSays(settings_, "HighContrastInverse") || portalDark_.value_or(darkBefore_);
}

bool Appearance::moreContrast() const {
  constexpr int kMore = 2;  // GTK_INTERFACE_CONTRAST_MORE
  int toolkit = 0;
  if (hasToolkitContrast(settings_)) {
    g_object_get(settings_->gobj(), kToolkitContrast, &toolkit, nullptr);
  }
  return portalContrast_ || toolkit == kMore || themeSays(settings_, "HighContrast");
}

void Appearance::markContrast() {
  // While the document is being begun it has no root yet.
  constexpr std::string_view kMark = R"(
    const mark = () => {
      const root = document.documentElement;
      if (!root) document.addEventListener("readystatechange", mark, {once: true});
      else if (more) root.dataset.contrast = "more";
      else delete root.dataset.contrast;
    };
    mark();)";
  GVariantDict arguments;
  g_variant_dict_init(&arguments, nullptr);
  g_variant_dict_insert(&arguments, "more", "d", moreContrast() ? 1.0 : 0.0);
  webkit_web_view_call_async_javascript_function(
      webView(page_), kMark.data(), static_cast<gssize>(kMark.size()),
      g_variant_dict_end(&arguments), nullptr, nullptr, nullptr, nullptr, nullptr);
}

}  // namespace orvanta
